#include <algorithm>
#include <string_view>

#include "system/recorded_name.h"
#include "system/windows_handle.h"

namespace brindle::host {

namespace {

constexpr std::string_view kServer = "//";
constexpr std::size_t kDriveLength = 3;  // "C:/"

std::string name_of(std::wstring wide) {
    std::replace(wide.begin(), wide.end(), L'\\', L'/');
    return to_utf8(String(wide.begin(), wide.end()));
}

// The text of a function that tells the room it needs when it gets too little; "" if it fails.
template <typename Function>
std::wstring text_from(const Function& function) {
    std::wstring text(MAX_PATH, L'\0');
    DWORD size = function(text.data(), static_cast<DWORD>(text.size()));
    if (size >= text.size()) {
        text.resize(size);
        size = function(text.data(), static_cast<DWORD>(text.size()));
    }
    text.resize(std::min<std::size_t>(size, text.size()));
    return text;
}

// Some drives, such as those in memory, do not tell the final name.
std::wstring full_name(const std::string& name) {
    return text_from([wide = wide_name(name)](wchar_t* text, DWORD room) {
        return GetFullPathNameW(wide.c_str(), room, text, nullptr);
    });
}

std::string without_prefix(const std::string& name) {
    constexpr std::string_view kLong = "//?/";
    constexpr std::string_view kLongServer = "//?/UNC/";
    if (name.starts_with(kLongServer)) {
        return std::string(kServer) + name.substr(kLongServer.size());
    }
    return name.starts_with(kLong) ? name.substr(kLong.size()) : name;
}

// "song.mp3" for "SONG.MP3", if that is how the folder lists it.
std::string listed_part(const std::string& name, const std::string& last_part) {
    if (last_part.find_first_of("*?<>\"") != std::string::npos) {
        return last_part;  // the system would look for a pattern
    }
    WIN32_FIND_DATAW found{};
    auto* const search = FindFirstFileW(wide_name(name).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return last_part;
    }
    FindClose(search);
    return name_of(found.cFileName);
}

// Parts of other forms stand for other files, for devices or for streams of a file.
bool is_recorded_part(std::string_view part) {
    constexpr char kFirstPrintable = ' ';
    return !part.empty() && part.back() != '.' && part.back() != ' ' &&
           part.find_first_of("\\:*?\"<>|") == std::string_view::npos &&
           std::all_of(part.begin(), part.end(), [](char character) {
               return static_cast<unsigned char>(character) >= kFirstPrintable;
           });
}

bool is_letter(char character) {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

}  // namespace

std::string real_name(const std::string& name, std::error_code& error) {
    error.clear();
    const WindowsHandle file(name, 0);
    if (!file.is_open()) {
        error.assign(static_cast<int>(GetLastError()), std::system_category());
        return {};
    }
    std::wstring found = text_from([&](wchar_t* text, DWORD room) {
        return GetFinalPathNameByHandleW(file.get(), text, room, VOLUME_NAME_DOS);
    });
    if (found.empty()) {
        found = full_name(name);
    }
    return without_prefix(name_of(found));
}

std::optional<std::string> recorded_name(const std::string& name) {
    const std::size_t slash = name.find_last_of("/\\:");
    const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
    std::error_code error;
    std::string folder = real_name(begin == 0 ? "." : name.substr(0, begin), error);
    if (error) {
        return std::nullopt;
    }
    if (!folder.ends_with('/')) {
        folder += '/';
    }
    return folder + listed_part(name, name.substr(begin));
}

bool is_recorded_name(const std::string& name) {
    std::string_view rest = name;
    if (rest.starts_with(kServer)) {
        rest.remove_prefix(kServer.size());
    } else if (rest.size() > kDriveLength && is_letter(rest[0]) && rest.substr(1, 2) == ":/") {
        rest.remove_prefix(kDriveLength);
    } else {
        return false;
    }
    while (true) {
        const std::size_t slash = rest.find('/');
        if (!is_recorded_part(rest.substr(0, slash))) {
            return false;
        }
        if (slash == std::string_view::npos) {
            return true;
        }
        rest.remove_prefix(slash + 1);
    }
}

}  // namespace brindle::host
