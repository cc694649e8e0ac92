#include "util/binary_file_windows.h"

#include <algorithm>
#include <utility>
#include <windows.h>

#include <brindle/error.h>

#include "util/system_error_windows.h"

namespace brindle {
namespace {

[[noreturn]] void raise_transfer_error() {
    raise_last_error(FileAction::Transfer);
}

// A handle that is not overlapped takes the position from here, and waits, too.
OVERLAPPED at(std::int64_t offset) {
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return position;
}

// As much as one call moves.
DWORD part_of(std::size_t bytes) {
    constexpr std::size_t kMax = 1U << 30U;
    return static_cast<DWORD>(std::min(bytes, kMax));
}

}  // namespace

WindowsFile::~WindowsFile() {
    if (handle_ != nullptr) {
        ::CloseHandle(handle_);
    }
}

void WindowsFile::require_regular_file() const {
    if (::GetFileType(handle_) != FILE_TYPE_DISK) {
        throw Error(RuntimeError::PathFileAccess);
    }
}

std::int64_t WindowsFile::length() {
    LARGE_INTEGER length{};
    if (::GetFileSizeEx(handle_, &length) == 0) {
        raise_transfer_error();
    }
    return length.QuadPart;
}

FileState WindowsFile::state() {
    constexpr int kLowBits = 32;
    const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << kLowBits | low; };
    BY_HANDLE_FILE_INFORMATION found{};
    if (::GetFileInformationByHandle(handle_, &found) == 0) {
        raise_transfer_error();
    }
    const FILETIME modified = found.ftLastWriteTime;
    return {.volume = found.dwVolumeSerialNumber,
            .number = joined(found.nFileIndexHigh, found.nFileIndexLow),
            .length = static_cast<std::int64_t>(joined(found.nFileSizeHigh, found.nFileSizeLow)),
            .modified =
                static_cast<std::int64_t>(joined(modified.dwHighDateTime, modified.dwLowDateTime))};
}

std::size_t WindowsFile::read_at(std::int64_t offset, std::span<std::uint8_t> into) {
    std::size_t done = 0;
    while (done < into.size()) {
        OVERLAPPED position = at(offset + static_cast<std::int64_t>(done));
        DWORD count = 0;
        if (::ReadFile(handle_, into.data() + done, part_of(into.size() - done), &count,
                       &position) == 0 &&
            ::GetLastError() != ERROR_HANDLE_EOF) {
            raise_transfer_error();
        }
        if (count == 0) {
            break;
        }
        done += count;
    }
    return done;
}

void WindowsFile::write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        OVERLAPPED position = at(offset + static_cast<std::int64_t>(done));
        DWORD count = 0;
        if (::WriteFile(handle_, bytes.data() + done, part_of(bytes.size() - done), &count,
                        &position) == 0) {
            raise_transfer_error();
        }
        if (count == 0) {
            throw Error(RuntimeError::DeviceInputOutput);
        }
        done += count;
    }
}

std::size_t WindowsFile::copy_from(BinaryFile& source, std::int64_t source_offset,
                                   std::int64_t offset, std::size_t count) {
    return copy_through_memory(source, source_offset, *this, offset, count, block_);
}

void WindowsFile::set_length(std::int64_t length) {
    LARGE_INTEGER end{};
    end.QuadPart = length;
    if (::SetFilePointerEx(handle_, end, nullptr, FILE_BEGIN) == 0 ||
        ::SetEndOfFile(handle_) == 0) {
        raise_transfer_error();
    }
}

void WindowsFile::flush() {
    if (::FlushFileBuffers(handle_) == 0) {
        raise_transfer_error();
    }
}

void WindowsFile::flush_data() {
    flush();
}

void WindowsFile::close() {
    if (::CloseHandle(std::exchange(handle_, nullptr)) == 0) {
        raise_transfer_error();
    }
}

}  // namespace brindle
