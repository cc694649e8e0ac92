// What loading and unloading the DLL leaves in the host's process: nothing after the first time.
// A program of its own, since an object of another test would keep the DLL loaded.
#include <cstdint>
#include <functional>
#include <process.h>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

constexpr int kRounds = 3'000;

std::wstring server_file() {
    const std::string narrow = BRINDLE_SERVER_FILE;
    return {narrow.begin(), narrow.end()};
}

// Allocates all indexes that are left and frees them again: the system tells the number in no
// other way.
std::size_t free_tls_indexes() {
    std::vector<DWORD> taken;
    for (DWORD index = ::TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = ::TlsAlloc()) {
        taken.push_back(index);
    }
    for (const DWORD index : taken) {
        ::TlsFree(index);
    }
    return taken.size();
}

struct Holdings {
    std::size_t free_tls_indexes;
    std::size_t handles;
    std::size_t heap_bytes;
};

Holdings holdings() {
    return {free_tls_indexes(), handles(), heap_bytes()};
}

// Nothing may grow after the first round.
void expect_no_growth(const std::function<void()>& round) {
    Holdings before{};
    for (int i = 0; i < kRounds; ++i) {
        if (i == 1) {
            before = holdings();
        }
        round();
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << i;
    }
    const Holdings after = holdings();
    EXPECT_GT(before.free_tls_indexes, 0U);
    EXPECT_GT(before.handles, 0U);
    EXPECT_GT(before.heap_bytes, 0U);
    EXPECT_EQ(after.free_tls_indexes, before.free_tls_indexes);
    EXPECT_EQ(after.handles, before.handles);
    // Less than a byte a round: the system's own blocks vary in size.
    EXPECT_LT(after.heap_bytes, before.heap_bytes + kRounds);
}

// One job of a host that initialises COM for each.
void do_job(const std::wstring& name) {
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    {
        const auto header = create();
        // Raised inside as a C++ exception.
        EXPECT_EQ(header->SaveAllInfo(), -896556);
        EXPECT_EQ(assign(*header.Get(), name), S_OK);
        EXPECT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_Title), L"A title");
        // Late bound, too, and the type information.
        DISPPARAMS none{};
        VARIANT found{};
        EXPECT_EQ(
            header->Invoke(23, GUID_NULL, 0, DISPATCH_PROPERTYGET, &none, &found, nullptr, nullptr),
            S_OK);
        EXPECT_EQ(taken(found.bstrVal), L"A title");
        ComPtr<ITypeInfo> type;
        EXPECT_EQ(header->GetTypeInfo(0, 0, &type), S_OK);
    }
    ::SetErrorInfo(0, nullptr);
    ::CoFreeUnusedLibraries();
    ::CoUninitialize();
}

unsigned __stdcall thread_of_job(void* name) {
    do_job(*static_cast<const std::wstring*>(name));
    return 0;
}

class Loading : public testing::Test {
protected:
    File file{L"loaded.mp3", tag({{"TIT2", "A title"}}) + audio(120)};
};

TEST_F(Loading, JobsThatEachInitialiseComLeaveNothing) {
    expect_no_growth([this] { do_job(file.name()); });
}

TEST_F(Loading, JobsOnThreadsOfTheirOwnLeaveNothing) {
    std::wstring name = file.name();
    expect_no_growth([&name] {
        const auto thread = reinterpret_cast<HANDLE>(
            ::_beginthreadex(nullptr, 0, thread_of_job, &name, 0, nullptr));
        ASSERT_NE(thread, nullptr);
        EXPECT_EQ(::WaitForSingleObject(thread, 60'000), WAIT_OBJECT_0);
        ::CloseHandle(thread);
    });
}

TEST(LoadLibraryAndFreeLibrary, LeaveNothing) {
    expect_no_growth([] {
        const HMODULE module = ::LoadLibraryW(server_file().c_str());
        ASSERT_NE(module, nullptr) << ::GetLastError();
        EXPECT_NE(::FreeLibrary(module), 0);
    });
}

TEST(LoadLibraryAndFreeLibrary, KeepTheDllAndItsAnswer) {
    const HMODULE module = ::LoadLibraryW(server_file().c_str());
    ASSERT_NE(module, nullptr);
    const auto can_unload = reinterpret_cast<HRESULT(__stdcall*)()>(
        reinterpret_cast<void*>(::GetProcAddress(module, "DllCanUnloadNow")));
    EXPECT_EQ(can_unload(), S_OK);
    EXPECT_NE(::FreeLibrary(module), 0);
    EXPECT_EQ(::GetModuleHandleW(L"Brindle.dll"), module);
}

}  // namespace
}  // namespace brindle::com::test
