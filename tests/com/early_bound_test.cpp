// A whole session of a host that calls through the slots.
#include <ocidl.h>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

using Header = host::_cMPEGHeader;

TEST(EarlyBound, SessionOfReadingSettingSavingAndStripping) {
    const File file(L"session.mp3", tag({{"TIT2", "Before"}, {"TPE1", "Somebody"}}) + audio(120));
    const auto header = create();
    Header& h = *header.Get();
    ASSERT_EQ(assign(h, file.name()), S_OK);
    EXPECT_EQ(text(h, &Header::get_Title), L"Before");
    EXPECT_EQ(text(h, &Header::get_MonoStereo), L"Joint Stereo");
    EXPECT_EQ(text(h, &Header::get_Layer), L"3");
    EXPECT_EQ(number(h, &Header::get_BitRate), 128000);
    EXPECT_EQ(number(h, &Header::get_Frequency), 44100);
    host::eTagType tags = host::NoTags;
    EXPECT_EQ(h.get_TagType(&tags), S_OK);
    EXPECT_EQ(tags, host::v2TagOnly);

    const Text title(L"After");
    const Text album(L"An album");
    EXPECT_EQ(h.put_Title(title.get()), S_OK);
    EXPECT_EQ(h.put_Album(album.get()), S_OK);
    EXPECT_EQ(h.put_Year(2011), S_OK);
    EXPECT_EQ(h.put_Speed(1.5), S_OK);
    EXPECT_EQ(h.put_Volume(-7), S_OK);
    EXPECT_EQ(h.put_Opener(5), S_OK);
    EXPECT_EQ(h.put_OutromsStart(123456), S_OK);
    EXPECT_EQ(h.put_NoFade(-1), S_OK);
    ASSERT_EQ(h.SaveAllInfo(), S_OK);

    const auto again = create();
    Header& a = *again.Get();
    ASSERT_EQ(assign(a, file.name()), S_OK);
    EXPECT_EQ(text(a, &Header::get_Title), L"After");
    EXPECT_EQ(text(a, &Header::get_Artist), L"Somebody");
    EXPECT_EQ(text(a, &Header::get_Album), L"An album");
    EXPECT_EQ(text(a, &Header::get_Titlev1Tag), L"After");
    short year = 0;
    EXPECT_EQ(a.get_Year(&year), S_OK);
    EXPECT_EQ(year, 2011);
    double speed = 0;
    EXPECT_EQ(a.get_Speed(&speed), S_OK);
    EXPECT_EQ(speed, 1.5);
    EXPECT_EQ(number(a, &Header::get_Volume), -7);
    EXPECT_EQ(number(a, &Header::get_Opener), -1);
    EXPECT_EQ(number(a, &Header::get_OutromsStart), 123456);
    short no_fade = 0;
    EXPECT_EQ(a.get_NoFade(&no_fade), S_OK);
    EXPECT_EQ(no_fade, -1);
    EXPECT_EQ(a.get_TagType(&tags), S_OK);
    EXPECT_EQ(tags, host::v1andv2TagsBothPresent);

    VARIANT_BOOL stripped = VARIANT_FALSE;
    EXPECT_EQ(a.StripTags(host::v1andv2TagsBothPresent, &stripped), S_OK);
    EXPECT_EQ(stripped, VARIANT_TRUE);
    EXPECT_EQ(a.get_TagType(&tags), S_OK);
    EXPECT_EQ(static_cast<long>(tags), -1);
    EXPECT_TRUE(file.content() == audio(120)) << file.content().size();
}

TEST(EarlyBound, PlainFieldsAndTheFormatOfTimes) {
    const auto header = create();
    EXPECT_EQ(header->put_TimeStyle(host::ShowAll), S_OK);
    host::eTimeDisplayStyle style = host::NoFractions;
    EXPECT_EQ(header->get_TimeStyle(&style), S_OK);
    EXPECT_EQ(style, host::ShowAll);
    EXPECT_EQ(header->put_Writev1v2Separate(VARIANT_TRUE), S_OK);
    VARIANT_BOOL separate = VARIANT_FALSE;
    EXPECT_EQ(header->get_Writev1v2Separate(&separate), S_OK);
    EXPECT_EQ(separate, VARIANT_TRUE);
    EXPECT_EQ(header->Test(), S_OK);
    BSTR time = nullptr;
    EXPECT_EQ(header->ElapsedTimeFromMs(62345, host::ShowAll, nullptr, &time), S_OK);
    EXPECT_EQ(taken(time), L"01:02.34");
    VARIANT_BOOL padding = VARIANT_FALSE;
    EXPECT_EQ(header->ElapsedTimeFromMs(-61000, host::NoFractions, &padding, &time), S_OK);
    EXPECT_EQ(taken(time), L"-01:-01");
    EXPECT_EQ(
        header->ElapsedTimeFromMs(0, static_cast<host::eTimeDisplayStyle>(3), &padding, &time),
        S_OK);
    EXPECT_EQ(taken(time), L"");
}

TEST(EarlyBound, OneIdentityUnderAllInterfaces) {
    const auto header = create();
    ComPtr<IUnknown> first;
    ComPtr<IUnknown> second;
    ComPtr<ISupportErrorInfo> support;
    ComPtr<IDispatch> dispatch;
    ComPtr<IProvideClassInfo> provider;
    ComPtr<IPersistFile> none;
    ASSERT_EQ(header.As(&first), S_OK);
    ASSERT_EQ(header.As(&support), S_OK);
    ASSERT_EQ(header.As(&dispatch), S_OK);
    ASSERT_EQ(header.As(&provider), S_OK);
    ASSERT_EQ(provider.As(&second), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    ASSERT_EQ(support.As(&second), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(header.As(&none), E_NOINTERFACE);
    ComPtr<IUnknown> outer;
    EXPECT_EQ(
        ::CoCreateInstance(host::kcMPEGHeaderClass, first.Get(), CLSCTX_INPROC_SERVER,
                           __uuidof(IUnknown), reinterpret_cast<void**>(outer.GetAddressOf())),
        CLASS_E_NOAGGREGATION);
}

}  // namespace
}  // namespace brindle::com::test
