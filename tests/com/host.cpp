#include "com/host.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ocidl.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace brindle::com::test {

std::wstring taken(BSTR text) {
    // A null one would be a text that was never handed out.
    std::wstring made = text == nullptr ? L"null" : std::wstring(text, ::SysStringLen(text));
    ::SysFreeString(text);
    return made;
}

ComPtr<host::_cMPEGHeader> create() {
    ComPtr<host::_cMPEGHeader> header;
    const HRESULT result =
        ::CoCreateInstance(host::kcMPEGHeaderClass, nullptr, CLSCTX_INPROC_SERVER,
                           host::kcMPEGHeaderId, reinterpret_cast<void**>(header.GetAddressOf()));
    EXPECT_EQ(result, S_OK) << "the class is not registered";
    if (!header) {
        std::abort();
    }
    return header;
}

ComPtr<host::_cMPEGHeader> create_with_clock(double seconds_at_each_look) {
    const std::string narrow = BRINDLE_TEST_CLOCK_SERVER;
    const HMODULE module = ::LoadLibraryW(std::wstring(narrow.begin(), narrow.end()).c_str());
    EXPECT_NE(module, nullptr) << narrow;
    using GetClass = HRESULT(__stdcall*)(REFCLSID, REFIID, void**);
    using Advance = void (*)(double);
    const auto function = [module](const char* name) {
        return reinterpret_cast<void*>(::GetProcAddress(module, name));
    };
    reinterpret_cast<Advance>(function("AdvanceClockByStep"))(seconds_at_each_look);
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(reinterpret_cast<GetClass>(function("DllGetClassObject"))(
                  host::kcMPEGHeaderClass, __uuidof(IClassFactory),
                  reinterpret_cast<void**>(factory.GetAddressOf())),
              S_OK);
    ComPtr<host::_cMPEGHeader> header;
    EXPECT_EQ(factory->CreateInstance(nullptr, host::kcMPEGHeaderId,
                                      reinterpret_cast<void**>(header.GetAddressOf())),
              S_OK);
    return header;
}

HRESULT assign(host::_cMPEGHeader& header, const std::wstring& name) {
    Text text(name);
    return header.put_FileName(text.reference());
}

File::File(const std::wstring& name, std::string_view content) : name_(temporary_folder() + name) {
    std::FILE* file = ::_wfopen(name_.c_str(), L"wb");
    EXPECT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite(content.data(), 1, content.size(), file), content.size());
    std::fclose(file);
}

File::~File() {
    ::_wremove(name_.c_str());
}

std::string File::content() const {
    std::FILE* file = ::_wfopen(name_.c_str(), L"rb");
    EXPECT_NE(file, nullptr);
    std::string made;
    for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file)) {
        made.push_back(static_cast<char>(byte));
    }
    std::fclose(file);
    return made;
}

std::wstring temporary_folder() {
    wchar_t folder[MAX_PATH + 1];
    return {folder, ::GetTempPathW(MAX_PATH, folder)};
}

namespace {

std::string frame(const char (&header)[5], std::size_t length) {
    return std::string(header, 4) + std::string(length - 4, '\0');
}

// 144000 * kbit/s / 44100, cut.
const std::string kFrame128 = frame("\xFF\xFB\x90\x64", 417);
const std::string kFrame160 = frame("\xFF\xFB\xA0\x64", 522);

}  // namespace

std::string audio(int count) {
    std::string made;
    for (int i = 0; i < count; ++i) {
        made += kFrame128;
    }
    return made;
}

std::string varying_audio(int count) {
    std::string made;
    for (int i = 0; i < count; ++i) {
        made += i % 2 == 0 ? kFrame128 : kFrame160;
    }
    return made;
}

std::string tag(const std::map<std::string, std::string>& frames) {
    std::string content;
    for (const auto& [id, value] : frames) {
        const auto size = static_cast<char>(value.size() + 1);
        content += id + std::string(3, '\0') + size + std::string(3, '\0') + value;
    }
    return std::string("ID3\x03\0\0\0\0", 8) + static_cast<char>(content.size() >> 7U) +
           static_cast<char>(content.size() & 0x7FU) + content;
}

namespace {

// The system's list of all handles of all processes; the entries follow the two counts.
struct HandleEntry {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};
constexpr std::size_t kHandleListHeader = 2 * sizeof(ULONG_PTR);

}  // namespace

// Not by GetProcessHandleCount, which Wine answers with 0.
std::size_t handles() {
    constexpr ULONG kExtendedHandleInformation = 64;
    constexpr std::size_t kListBytes = 16 << 20;
    using Query = LONG(__stdcall*)(ULONG, void*, ULONG, ULONG*);
    static const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<std::uint8_t> list(kListBytes);
    EXPECT_EQ(
        query(kExtendedHandleInformation, list.data(), static_cast<ULONG>(list.size()), nullptr),
        0);
    ULONG_PTR count = 0;
    std::memcpy(&count, list.data(), sizeof count);
    std::size_t own = 0;
    for (ULONG_PTR i = 0; i < count; ++i) {
        HandleEntry entry{};
        std::memcpy(&entry, list.data() + kHandleListHeader + i * sizeof entry, sizeof entry);
        own += entry.process == ::GetCurrentProcessId() ? 1 : 0;
    }
    return own;
}

std::size_t heap_bytes() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    EXPECT_GT(count, 0U);
    EXPECT_LE(count, heaps.size());
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        ::HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry{};
        while (::HeapWalk(heaps[i], &entry) != 0) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                bytes += entry.cbData;
            }
        }
        ::HeapUnlock(heaps[i]);
    }
    return bytes;
}

HRESULT Sink::QueryInterface(REFIID iid, void** object) {
    if (iid != __uuidof(IUnknown) && iid != __uuidof(IDispatch) && iid != host::kEventsId) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

HRESULT Sink::Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                     EXCEPINFO* exception, UINT*) {
    ++calls;
    const VARIANTARG* const given = arguments->rgvarg;
    if (event == 1 && arguments->cArgs == 4 && given[3].vt == VT_BSTR && given[2].vt == VT_I4 &&
        given[1].vt == VT_I4 && given[0].vt == (VT_BYREF | VT_BOOL)) {
        if (on_scanning) {
            on_scanning(given[3].bstrVal, given[2].lVal, given[1].lVal, *given[0].pboolVal);
        }
    } else if (event == 2 && arguments->cArgs == 1 && given[0].vt == (VT_BYREF | VT_I4)) {
        if (on_duration_needed) {
            on_duration_needed(*given[0].plVal);
        }
    } else if (event == 3 && arguments->cArgs == 1 && given[0].vt == VT_BSTR) {
        if (on_reading) {
            on_reading(std::wstring(given[0].bstrVal, ::SysStringLen(given[0].bstrVal)));
        }
    } else {
        ADD_FAILURE() << "event " << event << " with " << arguments->cArgs << " arguments";
    }
    if (answer == DISP_E_EXCEPTION && exception != nullptr) {
        exception->scode = E_FAIL;
        exception->bstrDescription = ::SysAllocString(L"a sink that fails");
    }
    return answer;
}

ComPtr<IConnectionPoint> events_of(host::_cMPEGHeader& header) {
    ComPtr<IConnectionPointContainer> container;
    EXPECT_EQ(header.QueryInterface(__uuidof(IConnectionPointContainer),
                                    reinterpret_cast<void**>(container.GetAddressOf())),
              S_OK);
    ComPtr<IConnectionPoint> point;
    EXPECT_EQ(container->FindConnectionPoint(host::kEventsId, &point), S_OK);
    return point;
}

DWORD advise(host::_cMPEGHeader& header, Sink& sink) {
    DWORD cookie = 0;
    EXPECT_EQ(events_of(header)->Advise(&sink, &cookie), S_OK);
    EXPECT_NE(cookie, 0U);
    return cookie;
}

}  // namespace brindle::com::test
