#include "util/binary_file_posix.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <optional>
#include <unistd.h>
#include <utility>

#include <sys/stat.h>
#ifdef __linux__
#include <sys/uio.h>
#endif

#include <brindle/error.h>

#include "util/file_state_posix.h"
#include "util/system_error_posix.h"

namespace brindle {
namespace {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "files of 2 GiB and more are ordinary");

// Where files share their storage on disk, they share it in units of this.
constexpr std::int64_t kPage = 4096;

// Runs a system call until no signal comes in between.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

[[noreturn]] void raise_transfer_error() {
    throw Error(runtime_error(errno, FileAction::Transfer));
}

// Of an open file.
struct stat status_of(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        raise_transfer_error();
    }
    return status;
}

bool kernel_cannot_copy(int code) {
    // EPERM: a sandbox that knows only older calls.
    return code == EXDEV || code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == EPERM;
}

}  // namespace

PosixFile::~PosixFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void PosixFile::require_regular_file() {
    constexpr std::int64_t kBlockUnit = 512;  // of st_blocks, on every system
    const struct stat status = status_of(descriptor_);
    if (!S_ISREG(status.st_mode)) {
        throw Error(RuntimeError::PathFileAccess);
    }
    state_at_opening_ = file_state(status);
    is_sparse_ = status.st_blocks < status.st_size / kBlockUnit;
}

FileState PosixFile::state() {
    // A file that was just opened is asked for its length next, which came with its type.
    if (const auto state = std::exchange(state_at_opening_, std::nullopt)) {
        return *state;
    }
    return file_state(status_of(descriptor_));
}

void PosixFile::expect_reads(ReadOrder order) {
#ifdef POSIX_FADV_RANDOM
    if (order != expected_order_) {
        // Only advice: the file is read all the same if the system does not take it.
        static_cast<void>(::posix_fadvise(
            descriptor_, 0, 0,
            order == ReadOrder::Scattered ? POSIX_FADV_RANDOM : POSIX_FADV_SEQUENTIAL));
    }
#endif
    expected_order_ = order;
}

std::size_t PosixFile::read_at(std::int64_t offset, std::span<std::uint8_t> into) {
    std::size_t done = 0;
    while (done < into.size()) {
        const ssize_t count = uninterrupted([&] {
            return ::pread(descriptor_, into.data() + done, into.size() - done,
                           offset + static_cast<std::int64_t>(done));
        });
        if (count < 0) {
            raise_transfer_error();
        }
        if (count == 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

std::size_t PosixFile::read_scattered_at(std::int64_t offset, std::span<std::uint8_t> first,
                                         std::span<std::uint8_t> second) {
#ifdef __linux__
    const iovec places[] = {{first.data(), first.size()}, {second.data(), second.size()}};
    const ssize_t result = uninterrupted(
        [&] { return ::preadv(descriptor_, std::data(places), std::ssize(places), offset); });
    if (result < 0) {
        raise_transfer_error();
    }
    // What a signal has cut off.
    const auto done = static_cast<std::size_t>(result);
    const std::size_t done_first = std::min(done, first.size());
    first = first.subspan(done_first);
    second = second.subspan(done - done_first);
    if (done == 0 || second.empty()) {
        return done;
    }
    return done + BinaryFile::read_scattered_at(offset + result, first, second);
#else
    return BinaryFile::read_scattered_at(offset, first, second);
#endif
}

void PosixFile::write_at(std::int64_t offset, std::span<const std::uint8_t> bytes) {
    // A device that takes nothing, again and again, would otherwise hang the host.
    constexpr int kMaxEmptyWrites = 100;
    state_at_opening_.reset();
    std::size_t done = 0;
    int empty_writes = 0;
    while (done < bytes.size()) {
        const ssize_t count = uninterrupted([&] {
            return ::pwrite(descriptor_, bytes.data() + done, bytes.size() - done,
                            offset + static_cast<std::int64_t>(done));
        });
        if (count < 0) {
            raise_transfer_error();
        }
        empty_writes = count == 0 ? empty_writes + 1 : 0;
        if (empty_writes > kMaxEmptyWrites) {
            throw Error(RuntimeError::DeviceInputOutput);
        }
        done += static_cast<std::size_t>(count);
    }
}

std::size_t PosixFile::copy_from(BinaryFile& source, std::int64_t source_offset,
                                 std::int64_t offset, std::size_t count) {
    state_at_opening_.reset();
    source.expect_reads(ReadOrder::Sequential);
    std::size_t done = 0;
    const auto* const native = dynamic_cast<const PosixFile*>(&source);
    if (native != nullptr && kernel_copies_ && (offset - source_offset) % kPage == 0) {
        done = copy_through_kernel(*native, source_offset, offset, count);
    }
    const auto copied = static_cast<std::int64_t>(done);
    return done + copy_through_memory(source, source_offset + copied, *this, offset + copied,
                                      count - done, block_);
}

// Ends early where the kernel refuses, and at the end of the file.
std::size_t PosixFile::copy_through_kernel(const PosixFile& source, std::int64_t source_offset,
                                           std::int64_t offset, std::size_t count) {
#ifdef __linux__
    off64_t from = source_offset;
    off64_t to = offset;
    std::size_t done = 0;
    while (done < count) {
        const ssize_t copied = uninterrupted([&] {
            return ::copy_file_range(source.descriptor_, &from, descriptor_, &to, count - done, 0);
        });
        if (copied < 0) {
            if (!kernel_cannot_copy(errno)) {
                raise_transfer_error();
            }
            kernel_copies_ = false;
            break;
        }
        if (copied == 0) {
            break;
        }
        done += static_cast<std::size_t>(copied);
    }
    return done;
#else
    static_cast<void>(source);
    static_cast<void>(source_offset);
    static_cast<void>(offset);
    static_cast<void>(count);
    kernel_copies_ = false;
    return 0;
#endif
}

void PosixFile::set_length(std::int64_t length) {
    state_at_opening_.reset();
    if (uninterrupted([&] { return ::ftruncate(descriptor_, length); }) != 0) {
        raise_transfer_error();
    }
}

ByteRange PosixFile::data_in(const ByteRange& range) {
#ifdef SEEK_DATA
    if (is_sparse_) {
        const off_t begin = ::lseek(descriptor_, range.begin, SEEK_DATA);
        if (begin < 0 && errno != ENXIO) {
            is_sparse_ = false;  // a file system that does not know its holes
            return range;
        }
        if (begin < 0 || begin >= range.end) {
            return {range.end, range.end};
        }
        const off_t end = ::lseek(descriptor_, begin, SEEK_HOLE);
        return {begin, end < 0 ? range.end : std::min<std::int64_t>(end, range.end)};
    }
#endif
    return range;
}

void PosixFile::flush() {
    // Not fdatasync: of a file that was just made, owner, mode and times belong to the device too.
    if (uninterrupted([&] { return ::fsync(descriptor_); }) != 0) {
        raise_transfer_error();
    }
}

void PosixFile::flush_data() {
    if (uninterrupted([&] { return ::fdatasync(descriptor_); }) != 0) {
        raise_transfer_error();
    }
}

void PosixFile::close() {
    state_at_opening_.reset();
    // Never again after a signal: the descriptor is gone by then and may already be another's.
    if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) {
        raise_transfer_error();
    }
}

}  // namespace brindle
