#include "facade/com/registration.h"

#include <memory>
#include <oaidl.h>
#include <oleauto.h>
#include <string>
#include <type_traits>
#include <windows.h>

#include "facade/com/module.h"
#include "facade/com/result_error.h"
#include "facade/com/type_library.h"

namespace brindle::com {
namespace {

constexpr wchar_t kProgId[] = L"Brindle.cMPEGHeader";
constexpr wchar_t kClass[] = L"CLSID\\{0571B13A-907D-4C45-8E34-42489A98C25D}";
constexpr wchar_t kClassId[] = L"{0571B13A-907D-4C45-8E34-42489A98C25D}";
constexpr wchar_t kLibraryId[] = L"{3DD4AB2B-FE65-4BF7-996E-A3AFCE69FD27}";
constexpr GUID kLibrary = {
    0x3DD4AB2B, 0xFE65, 0x4BF7, {0x99, 0x6E, 0xA3, 0xAF, 0xCE, 0x69, 0xFD, 0x27}};
constexpr bool kIs64Bit = sizeof(void*) == 8;
constexpr SYSKIND kSystem = kIs64Bit ? SYS_WIN64 : SYS_WIN32;
constexpr const wchar_t* kLibraryOfThisWidth =
    kIs64Bit ? L"TypeLib\\{3DD4AB2B-FE65-4BF7-996E-A3AFCE69FD27}\\6.2\\0\\win64"
             : L"TypeLib\\{3DD4AB2B-FE65-4BF7-996E-A3AFCE69FD27}\\6.2\\0\\win32";
constexpr WORD kMajor = 6;
constexpr WORD kMinor = 2;

struct Entry {
    const wchar_t* root;   // unregistering removes it with all that is in it
    const wchar_t* key;    // below it; null: the root itself
    const wchar_t* name;   // null: the key's own value
    const wchar_t* value;  // null: the name of the DLL's file
};

// clang-format off
constexpr Entry kEntries[] = {
    // root   key                          name               value
    {kProgId, nullptr,                     nullptr,           kProgId},
    {kProgId, L"CLSID",                    nullptr,           kClassId},
    {kClass,  nullptr,                     nullptr,           kProgId},
    {kClass,  L"ProgID",                   nullptr,           kProgId},
    {kClass,  L"VersionIndependentProgID", nullptr,           kProgId},
    {kClass,  L"Programmable",             nullptr,           L""},
    {kClass,  L"InprocServer32",           nullptr,           nullptr},
    {kClass,  L"InprocServer32",           L"ThreadingModel", L"Apartment"},
    {kClass,  L"TypeLib",                  nullptr,           kLibraryId},
    {kClass,  L"Version",                  nullptr,           L"6.2"},
};
// clang-format on

struct CloseKey {
    void operator()(HKEY key) const { ::RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

void check_registry(LSTATUS status) {
    check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

void write(const Entry& entry, const std::wstring& file) {
    std::wstring path = entry.root;
    if (entry.key != nullptr) {
        path += L"\\";
        path += entry.key;
    }
    HKEY opened = nullptr;
    check_registry(::RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE,
                                     nullptr, &opened, nullptr));
    const Key key(opened);
    const std::wstring value = entry.value == nullptr ? file : entry.value;
    const std::size_t bytes = (value.size() + 1) * sizeof(wchar_t);
    check_registry(::RegSetValueExW(opened, entry.name, 0, REG_SZ,
                                    reinterpret_cast<const BYTE*>(value.c_str()),
                                    static_cast<DWORD>(bytes)));
}

bool is_there(const wchar_t* path, REGSAM width = 0) {
    HKEY opened = nullptr;
    const LSTATUS status =
        ::RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_QUERY_VALUE | width, &opened);
    const Key key(opened);
    return status == ERROR_SUCCESS;
}

// Windows keeps the classes of 32-bit and 64-bit hosts apart, but not the names by which scripts
// ask for them: the DLL of the other width may need the name still.
bool other_width_is_registered() {
    constexpr REGSAM kOtherWidth = kIs64Bit ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
    return is_there(kClass, kOtherWidth);
}

void remove_root(const wchar_t* root) {
    const LSTATUS status = ::RegDeleteTreeW(HKEY_CLASSES_ROOT, root);
    if (status != ERROR_FILE_NOT_FOUND) {
        check_registry(status);
    }
}

}  // namespace

void register_server() {
    const std::wstring file = module_file();
    for (const Entry& entry : kEntries) {
        write(entry, file);
    }
    check(
        ::RegisterTypeLib(load_type_library().Get(), const_cast<wchar_t*>(file.c_str()), nullptr));
}

void unregister_server() {
    if (is_there(kLibraryOfThisWidth)) {
        check(::UnRegisterTypeLib(kLibrary, kMajor, kMinor, LOCALE_NEUTRAL, kSystem));
    }
    remove_root(kClass);
    if (!other_width_is_registered()) {
        remove_root(kProgId);
    }
}

}  // namespace brindle::com
