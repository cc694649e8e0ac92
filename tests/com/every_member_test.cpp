// What each property answers where there is nothing to answer.
#include <string>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

using Header = host::_cMPEGHeader;

template <typename Out>
using Get = HRESULT (__stdcall Header::*)(Out*);

// All but Layer, which has no default.
constexpr Get<BSTR> kTexts[] = {
    &Header::get_MonoStereo, &Header::get_FileName,  &Header::get_CategoryLevel,
    &Header::get_Title,      &Header::get_Composer,  &Header::get_Publisher,
    &Header::get_CopyRight,  &Header::get_Agency,    &Header::get_AccountExec,
    &Header::get_URL,        &Header::get_Copy,      &Header::get_Artist,
    &Header::get_ArtistUrl,  &Header::get_Album,     &Header::get_Comments,
    &Header::get_Endstyle,   &Header::get_Genre,     &Header::get_artistv1Tag,
    &Header::get_Titlev1Tag, &Header::get_Commentv1,
};
constexpr Get<long> kLongs[] = {
    &Header::get_BitRate,      &Header::get_Volume,
    &Header::get_Opener,       &Header::get_CueInmSStart,
    &Header::get_Duration,     &Header::get_Frequency,
    &Header::get_Sectone,      &Header::get_Intro,
    &Header::get_OutromsStart, &Header::ID3TagSizeIncludingHeader,
};
// Booleans are the same type.
constexpr Get<short> kShorts[] = {
    &Header::get_FrameCount,     &Header::get_NoFade,    &Header::get_Track,
    &Header::get_Year,           &Header::get_Yearv1Tag, &Header::get_VBR,
    &Header::get_RepairRequired, &Header::get_g_InUse,   &Header::get_Writev1v2Separate,
};

// `loaded` is what g_InUse must answer.
void expect_no_numbers(Header& header, VARIANT_BOOL loaded) {
    for (const auto& get : kLongs) {
        EXPECT_EQ(number(header, get), 0) << "long " << &get - kLongs;
    }
    for (const auto& get : kShorts) {
        short value = -1;
        EXPECT_EQ((header.*get)(&value), S_OK);
        const bool is_loaded_mark = get == &Header::get_g_InUse;
        EXPECT_EQ(value, is_loaded_mark ? loaded : VARIANT_FALSE) << "short " << &get - kShorts;
    }
    double speed = -1;
    EXPECT_EQ(header.get_Speed(&speed), S_OK);
    EXPECT_EQ(speed, 0);
    host::eTagType tags = host::NoTags;
    EXPECT_EQ(header.get_TagType(&tags), S_OK);
    EXPECT_EQ(static_cast<long>(tags), -1);
    host::eTimeDisplayStyle style = host::ShowAll;
    EXPECT_EQ(header.get_TimeStyle(&style), S_OK);
    EXPECT_EQ(style, host::NoFractions);
}

TEST(EveryMember, HasItsDefaultInANewObject) {
    const auto created = create();
    Header& header = *created.Get();
    for (const auto& get : kTexts) {
        EXPECT_EQ(text(header, get), L"") << "text " << &get - kTexts;
    }
    expect_no_numbers(header, VARIANT_FALSE);
    VARIANT found{};
    EXPECT_EQ(header.get_Category(&found), S_OK);
    EXPECT_EQ(found.vt, VT_EMPTY);
    const Text name(L"Cue In");
    EXPECT_EQ(header.CustomFieldRetrieve(name.get(), &found), S_OK);
    EXPECT_EQ(found.vt, VT_EMPTY);
    VARIANT_BOOL answer = VARIANT_TRUE;
    EXPECT_EQ(header.CustomFieldExists(name.get(), &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_FALSE);
    answer = VARIANT_TRUE;
    EXPECT_EQ(header.StripTags(host::v1andv2TagsBothPresent, &answer), S_OK);
    EXPECT_EQ(answer, VARIANT_FALSE);
    BSTR value = nullptr;
    EXPECT_EQ(header.get_v2Tag(name.get(), 1, &value), S_OK);
    EXPECT_EQ(taken(value), L"");
    auto* frames = reinterpret_cast<IDispatch*>(1);
    EXPECT_EQ(create()->get_v2Frames(&frames), S_OK);
    EXPECT_EQ(frames, nullptr);
    BSTR layer = nullptr;
    EXPECT_EQ(static_cast<unsigned long>(create()->get_Layer(&layer)), 0x800A005BUL);  // 91
    EXPECT_EQ(layer, nullptr);
}

TEST(EveryMember, HasItsDefaultWhereNoFileIsOpen) {
    for (const wchar_t* name : {L"", L"song.wav", L"C:\\missing\\song.mp3"}) {
        const auto created = create();
        Header& header = *created.Get();
        EXPECT_EQ(assign(header, name), S_OK);
        for (const auto& get : kTexts) {
            const bool is_number = get == &Header::get_Genre || get == &Header::get_CategoryLevel;
            EXPECT_EQ(text(header, get), is_number ? L"0" : L"") << "text " << &get - kTexts;
        }
        EXPECT_EQ(text(header, &Header::get_Layer), L"0");
        expect_no_numbers(header, VARIANT_TRUE);
        ComPtr<IDispatch> object;
        EXPECT_EQ(header.get_v2Frames(&object), S_OK);
        ComPtr<host::IKeyedCollection> frames;
        ASSERT_EQ(object->QueryInterface(host::kIKeyedCollectionId,
                                         reinterpret_cast<void**>(frames.GetAddressOf())),
                  S_OK);
        EXPECT_EQ(number(*frames.Get(), &host::IKeyedCollection::get_Count), 0);
        VARIANT found{};
        const Text field(L"Cue In");
        EXPECT_EQ(header.CustomFieldRetrieve(field.get(), &found), S_OK);
        ASSERT_EQ(found.vt, VT_BSTR);
        EXPECT_EQ(taken(found.bstrVal), L"");
        EXPECT_EQ(header.SaveAllInfo(), S_OK);
    }
}

TEST(EveryMember, RefusesNullForAResult) {
    const auto header = create();
    Header& h = *header.Get();
    for (const auto& get : kTexts) {
        EXPECT_EQ((h.*get)(nullptr), E_POINTER);
    }
    for (const auto& get : kLongs) {
        EXPECT_EQ((h.*get)(nullptr), E_POINTER);
    }
    for (const auto& get : kShorts) {
        EXPECT_EQ((h.*get)(nullptr), E_POINTER);
    }
    EXPECT_EQ(h.get_Layer(nullptr), E_POINTER);
    EXPECT_EQ(h.get_TimeStyle(nullptr), E_POINTER);
    EXPECT_EQ(h.get_Speed(nullptr), E_POINTER);
    EXPECT_EQ(h.get_TagType(nullptr), E_POINTER);
    EXPECT_EQ(h.get_Category(nullptr), E_POINTER);
    EXPECT_EQ(h.get_v2Frames(nullptr), E_POINTER);
    EXPECT_EQ(h.get_v2Tag(nullptr, 1, nullptr), E_POINTER);
    EXPECT_EQ(h.put_FileName(nullptr), E_POINTER);
    EXPECT_EQ(h.RaiseScanningEvent(nullptr, 0, 0, nullptr), E_POINTER);
    EXPECT_EQ(h.StripTags(host::NoTags, nullptr), E_POINTER);
    EXPECT_EQ(h.CustomFieldExists(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(h.CustomFieldRetrieve(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(h.ElapsedTimeFromMs(0, host::ShowAll, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(h.QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
    EXPECT_EQ(h.GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(h.GetTypeInfo(0, 0, nullptr), E_POINTER);
}

}  // namespace
}  // namespace brindle::com::test
