#include "util/disk_name_windows.h"

#include <string_view>
#include <windows.h>

#include <brindle/error.h>

namespace brindle {
namespace {

constexpr std::wstring_view kLongName = L"\\\\?\\";
constexpr std::wstring_view kLongNetworkName = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevice = L"\\\\.\\";
constexpr std::wstring_view kNetwork = L"\\\\";

// From the root, with "\" alone and without "." and "..": a name with a prefix is taken literally.
std::wstring full_name(const std::wstring& name) {
    std::wstring full;
    DWORD size = ::GetFullPathNameW(name.c_str(), 0, nullptr, nullptr);
    while (size > full.size()) {
        full.resize(size);
        size = ::GetFullPathNameW(name.c_str(), size, full.data(), nullptr);
    }
    full.resize(size);
    // What the system cannot complete it will refuse by its own name.
    return full.empty() ? name : full;
}

}  // namespace

std::wstring disk_name(const String& name) {
    if (name.find(u'\0') != String::npos) {
        throw Error(RuntimeError::FileNotFound);
    }
    std::wstring plain(name.begin(), name.end());
    if (plain.size() < MAX_PATH || plain.starts_with(kLongName) || plain.starts_with(kDevice)) {
        return plain;
    }
    const std::wstring full = full_name(plain);
    if (full.starts_with(kNetwork)) {
        return std::wstring(kLongNetworkName) + full.substr(kNetwork.size());
    }
    return std::wstring(kLongName) + full;
}

}  // namespace brindle
