// What many objects one after another leave behind: nothing.
#include <ocidl.h>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

HRESULT can_unload() {
    using CanUnload = HRESULT(__stdcall*)();
    const std::string narrow = BRINDLE_SERVER;
    const HMODULE module = ::GetModuleHandleW(std::wstring(narrow.begin(), narrow.end()).c_str());
    EXPECT_NE(module, nullptr);
    void* const function = reinterpret_cast<void*>(::GetProcAddress(module, "DllCanUnloadNow"));
    return reinterpret_cast<CanUnload>(function)();
}

void use_one(const std::wstring& name) {
    const auto header = create();
    ASSERT_EQ(header->SaveAllInfo(), -896556);  // with an error object
    Sink sink;
    const DWORD cookie = advise(*header.Get(), sink);
    ASSERT_EQ(assign(*header.Get(), name), S_OK);
    ASSERT_EQ(text(*header.Get(), &host::_cMPEGHeader::get_Title), L"A title");
    ComPtr<IDispatch> frames;
    ASSERT_EQ(header->get_v2Frames(&frames), S_OK);
    ComPtr<ITypeInfo> type;
    ASSERT_EQ(header->GetTypeInfo(0, 0, &type), S_OK);
    // Late bound, too.
    DISPPARAMS none{};
    VARIANT found{};
    ASSERT_EQ(
        header->Invoke(23, GUID_NULL, 0, DISPATCH_PROPERTYGET, &none, &found, nullptr, nullptr),
        S_OK);
    ASSERT_EQ(taken(found.bstrVal), L"A title");
    ASSERT_EQ(events_of(*header.Get())->Unadvise(cookie), S_OK);
    ASSERT_EQ(sink.references, 0U);
}

TEST(Lifetime, TenThousandRoundsLeaveNothingBehind) {
    constexpr int kRounds = 10'000;
    constexpr int kFirstRounds = 500;  // the system's tables have found their size
    const File file(L"rounds.mp3", tag({{"TIT2", "A title"}}) + audio(120));
    std::size_t bytes = 0;
    std::size_t handles_before = 0;
    for (int round = 0; round < kRounds; ++round) {
        if (round == kFirstRounds) {
            bytes = heap_bytes();
            handles_before = handles();
        }
        use_one(file.name());
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
    ::SetErrorInfo(0, nullptr);
    EXPECT_GT(bytes, 0U);
    EXPECT_GT(handles_before, 0U);
    EXPECT_LT(heap_bytes(), bytes + kRounds);  // less than a byte a round
    EXPECT_LE(handles(), handles_before + 2);
    EXPECT_EQ(can_unload(), S_OK);
}

TEST(Lifetime, EveryKindOfObjectKeepsTheDllLoaded) {
    const File file(L"kept.mp3", tag({{"TIT2", "A title"}}) + audio(120));
    ComPtr<IUnknown> kept;
    {
        const auto header = create();
        EXPECT_EQ(can_unload(), S_FALSE);
        ASSERT_EQ(assign(*header.Get(), file.name()), S_OK);
        ComPtr<IDispatch> frames;
        ASSERT_EQ(header->get_v2Frames(&frames), S_OK);
        ASSERT_EQ(frames.As(&kept), S_OK);
    }
    EXPECT_EQ(can_unload(), S_FALSE);
    kept.Reset();
    EXPECT_EQ(can_unload(), S_OK);
    {
        ComPtr<IConnectionPoint> point = events_of(*create().Get());
        EXPECT_EQ(can_unload(), S_FALSE);
    }
    EXPECT_EQ(can_unload(), S_OK);
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(::CoGetClassObject(host::kcMPEGHeaderClass, CLSCTX_INPROC_SERVER, nullptr,
                                 __uuidof(IClassFactory),
                                 reinterpret_cast<void**>(factory.GetAddressOf())),
              S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.Reset();
    EXPECT_EQ(can_unload(), S_FALSE);
    ASSERT_EQ(::CoGetClassObject(host::kcMPEGHeaderClass, CLSCTX_INPROC_SERVER, nullptr,
                                 __uuidof(IClassFactory),
                                 reinterpret_cast<void**>(factory.GetAddressOf())),
              S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

}  // namespace
}  // namespace brindle::com::test
