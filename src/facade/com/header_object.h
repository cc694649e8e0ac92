#pragma once

#include <ocidl.h>
#include <type_traits>

#include <brindle/cMPEGHeader.h>

#include "facade/com/connection_point.h"
#include "facade/com/dispatch_object.h"
#include "facade/com/values.h"

namespace brindle::com {

template <>
[[nodiscard]] Members members_of<::_cMPEGHeader>() noexcept;

// The creatable class: converts what comes and goes; all else is the facade's.
class HeaderObject final
    : public DispatchObject<::_cMPEGHeader, IProvideClassInfo2, IConnectionPointContainer> {
public:
    HeaderObject();

    HRESULT __stdcall get_g_InUse(VARIANT_BOOL* Value) override {
        return get(&cMPEGHeader::g_InUse, Value);
    }
    HRESULT __stdcall put_g_InUse(VARIANT_BOOL Value) override {
        return let(&cMPEGHeader::g_InUse, Value);
    }
    HRESULT __stdcall get_TimeStyle(::eTimeDisplayStyle* Value) override {
        return get(&cMPEGHeader::TimeStyle, Value);
    }
    HRESULT __stdcall put_TimeStyle(::eTimeDisplayStyle Value) override {
        return let(&cMPEGHeader::TimeStyle, Value);
    }
    HRESULT __stdcall RaiseScanningEvent(BSTR FileName, LONG FilePos, LONG FileLength,
                                         VARIANT_BOOL* Cancel) override;
    HRESULT __stdcall SaveAllInfo() override {
        return run([this] { header_.SaveAllInfo(); });
    }
    HRESULT __stdcall get_MonoStereo(BSTR* Value) override {
        return get(&cMPEGHeader::MonoStereo, Value);
    }
    HRESULT __stdcall get_BitRate(LONG* Value) override {
        return get(&cMPEGHeader::BitRate, Value);
    }
    HRESULT __stdcall put_FileName(BSTR* NewFileName) override;
    HRESULT __stdcall get_Speed(double* Value) override { return get(&cMPEGHeader::Speed, Value); }
    HRESULT __stdcall put_Speed(double Value) override { return let(&cMPEGHeader::Speed, Value); }
    HRESULT __stdcall get_Volume(LONG* Value) override { return get(&cMPEGHeader::Volume, Value); }
    HRESULT __stdcall put_Volume(LONG Value) override { return let(&cMPEGHeader::Volume, Value); }
    HRESULT __stdcall get_Opener(LONG* Value) override { return get(&cMPEGHeader::Opener, Value); }
    HRESULT __stdcall put_Opener(LONG Value) override { return let(&cMPEGHeader::Opener, Value); }
    HRESULT __stdcall get_FileName(BSTR* Value) override {
        return get(&cMPEGHeader::FileName, Value);
    }
    HRESULT __stdcall get_CueInmSStart(LONG* Value) override {
        return get(&cMPEGHeader::CueInmSStart, Value);
    }
    HRESULT __stdcall put_CueInmSStart(LONG Value) override {
        return let(&cMPEGHeader::CueInmSStart, Value);
    }
    HRESULT __stdcall get_CategoryLevel(BSTR* Value) override {
        return get(&cMPEGHeader::CategoryLevel, Value);
    }
    HRESULT __stdcall put_CategoryLevel(BSTR Value) override {
        return let(&cMPEGHeader::CategoryLevel, Value);
    }
    HRESULT __stdcall get_TagType(::eTagType* Value) override {
        return get(&cMPEGHeader::TagType, Value);
    }
    HRESULT __stdcall CustomFieldAdd(BSTR FieldDescriptor, VARIANT FieldValue) override;
    HRESULT __stdcall CustomFieldExists(BSTR FieldDescriptor, VARIANT_BOOL* Result) override;
    HRESULT __stdcall CustomFieldRetrieve(BSTR FieldDescriptor, VARIANT* Result) override;
    HRESULT __stdcall get_VBR(VARIANT_BOOL* Value) override {
        return get(&cMPEGHeader::VBR, Value);
    }
    HRESULT __stdcall get_Layer(BSTR* Value) override { return get(&cMPEGHeader::Layer, Value); }
    HRESULT __stdcall get_Duration(LONG* Value) override {
        return get(&cMPEGHeader::Duration, Value);
    }
    HRESULT __stdcall get_Frequency(LONG* Value) override {
        return get(&cMPEGHeader::Frequency, Value);
    }
    HRESULT __stdcall get_FrameCount(short* Value) override {
        return get(&cMPEGHeader::FrameCount, Value);
    }
    HRESULT __stdcall get_Title(BSTR* Value) override { return get(&cMPEGHeader::Title, Value); }
    HRESULT __stdcall put_Title(BSTR Value) override { return let(&cMPEGHeader::Title, Value); }
    HRESULT __stdcall get_NoFade(short* Value) override { return get(&cMPEGHeader::NoFade, Value); }
    HRESULT __stdcall put_NoFade(short Value) override { return let(&cMPEGHeader::NoFade, Value); }
    HRESULT __stdcall put_Composer(BSTR Value) override {
        return let(&cMPEGHeader::Composer, Value);
    }
    HRESULT __stdcall get_Composer(BSTR* Value) override {
        return get(&cMPEGHeader::Composer, Value);
    }
    HRESULT __stdcall get_Publisher(BSTR* Value) override {
        return get(&cMPEGHeader::Publisher, Value);
    }
    HRESULT __stdcall put_Publisher(BSTR Value) override {
        return let(&cMPEGHeader::Publisher, Value);
    }
    HRESULT __stdcall put_CopyRight(BSTR Value) override {
        return let(&cMPEGHeader::CopyRight, Value);
    }
    HRESULT __stdcall get_CopyRight(BSTR* Value) override {
        return get(&cMPEGHeader::CopyRight, Value);
    }
    HRESULT __stdcall get_Agency(BSTR* Value) override { return get(&cMPEGHeader::Agency, Value); }
    HRESULT __stdcall put_Agency(BSTR Value) override { return let(&cMPEGHeader::Agency, Value); }
    HRESULT __stdcall get_AccountExec(BSTR* Value) override {
        return get(&cMPEGHeader::AccountExec, Value);
    }
    HRESULT __stdcall put_AccountExec(BSTR Value) override {
        return let(&cMPEGHeader::AccountExec, Value);
    }
    HRESULT __stdcall get_URL(BSTR* Value) override { return get(&cMPEGHeader::URL, Value); }
    HRESULT __stdcall put_URL(BSTR Value) override { return let(&cMPEGHeader::URL, Value); }
    HRESULT __stdcall get_Copy(BSTR* Value) override { return get(&cMPEGHeader::Copy, Value); }
    HRESULT __stdcall put_Copy(BSTR Value) override { return let(&cMPEGHeader::Copy, Value); }
    HRESULT __stdcall put_Song(BSTR Value) override { return let(&cMPEGHeader::Song, Value); }
    HRESULT __stdcall get_Artist(BSTR* Value) override { return get(&cMPEGHeader::Artist, Value); }
    HRESULT __stdcall put_Artist(BSTR Value) override { return let(&cMPEGHeader::Artist, Value); }
    HRESULT __stdcall get_ArtistUrl(BSTR* Value) override {
        return get(&cMPEGHeader::ArtistUrl, Value);
    }
    HRESULT __stdcall put_ArtistUrl(BSTR Value) override {
        return let(&cMPEGHeader::ArtistUrl, Value);
    }
    HRESULT __stdcall put_Sectone(LONG Value) override { return let(&cMPEGHeader::Sectone, Value); }
    HRESULT __stdcall get_Sectone(LONG* Value) override {
        return get(&cMPEGHeader::Sectone, Value);
    }
    HRESULT __stdcall put_Intro(LONG Value) override { return let(&cMPEGHeader::Intro, Value); }
    HRESULT __stdcall get_Intro(LONG* Value) override { return get(&cMPEGHeader::Intro, Value); }
    HRESULT __stdcall put_Category(VARIANT Value) override;
    HRESULT __stdcall get_Category(VARIANT* Value) override {
        return get(&cMPEGHeader::Category, Value);
    }
    HRESULT __stdcall get_Album(BSTR* Value) override { return get(&cMPEGHeader::Album, Value); }
    HRESULT __stdcall Test() override {
        return run([this] { header_.Test(); });
    }
    HRESULT __stdcall put_Album(BSTR Value) override { return let(&cMPEGHeader::Album, Value); }
    HRESULT __stdcall get_Track(short* Value) override { return get(&cMPEGHeader::Track, Value); }
    HRESULT __stdcall put_Track(short Value) override { return let(&cMPEGHeader::Track, Value); }
    HRESULT __stdcall get_Year(short* Value) override { return get(&cMPEGHeader::Year, Value); }
    HRESULT __stdcall put_Year(short Value) override { return let(&cMPEGHeader::Year, Value); }
    HRESULT __stdcall get_Comments(BSTR* Value) override {
        return get(&cMPEGHeader::Comments, Value);
    }
    HRESULT __stdcall put_Comments(BSTR Value) override {
        return let(&cMPEGHeader::Comments, Value);
    }
    HRESULT __stdcall put_Endstyle(BSTR Value) override {
        return let(&cMPEGHeader::Endstyle, Value);
    }
    HRESULT __stdcall get_Endstyle(BSTR* Value) override {
        return get(&cMPEGHeader::Endstyle, Value);
    }
    HRESULT __stdcall put_OutromsStart(LONG Value) override {
        return let(&cMPEGHeader::OutromsStart, Value);
    }
    HRESULT __stdcall get_OutromsStart(LONG* Value) override {
        return get(&cMPEGHeader::OutromsStart, Value);
    }
    HRESULT __stdcall get_Genre(BSTR* Value) override { return get(&cMPEGHeader::Genre, Value); }
    HRESULT __stdcall put_Genre(BSTR Value) override { return let(&cMPEGHeader::Genre, Value); }
    HRESULT __stdcall StripTags(::eTagType eTagTypes, VARIANT_BOOL* Result) override;
    HRESULT __stdcall get_artistv1Tag(BSTR* Value) override {
        return get(&cMPEGHeader::artistv1Tag, Value);
    }
    HRESULT __stdcall put_artistv1Tag(BSTR Value) override {
        return let(&cMPEGHeader::artistv1Tag, Value);
    }
    HRESULT __stdcall put_Titlev1Tag(BSTR Value) override {
        return let(&cMPEGHeader::Titlev1Tag, Value);
    }
    HRESULT __stdcall get_Titlev1Tag(BSTR* Value) override {
        return get(&cMPEGHeader::Titlev1Tag, Value);
    }
    HRESULT __stdcall get_Yearv1Tag(short* Value) override {
        return get(&cMPEGHeader::Yearv1Tag, Value);
    }
    HRESULT __stdcall put_Yearv1Tag(short Value) override {
        return let(&cMPEGHeader::Yearv1Tag, Value);
    }
    HRESULT __stdcall ElapsedTimeFromMs(LONG ms, ::eTimeDisplayStyle TimeStyle,
                                        VARIANT_BOOL* UsePadding, BSTR* Result) override;
    HRESULT __stdcall get_v2Frames(IDispatch** Value) override;
    HRESULT __stdcall get_v2Tag(BSTR sFrame, LONG indexInFrame, BSTR* Value) override;
    HRESULT __stdcall put_Writev1v2Separate(VARIANT_BOOL Value) override {
        return let(&cMPEGHeader::Writev1v2Separate, Value);
    }
    HRESULT __stdcall get_Writev1v2Separate(VARIANT_BOOL* Value) override {
        return get(&cMPEGHeader::Writev1v2Separate, Value);
    }
    HRESULT __stdcall put_Commentv1(BSTR Value) override {
        return let(&cMPEGHeader::Commentv1, Value);
    }
    HRESULT __stdcall get_Commentv1(BSTR* Value) override {
        return get(&cMPEGHeader::Commentv1, Value);
    }
    HRESULT __stdcall get_RepairRequired(VARIANT_BOOL* Value) override {
        return get(&cMPEGHeader::RepairRequired, Value);
    }
    HRESULT __stdcall ID3TagSizeIncludingHeader(LONG* Result) override {
        return get(&cMPEGHeader::ID3TagSizeIncludingHeader, Result);
    }

    HRESULT __stdcall GetClassInfo(ITypeInfo** type) override;
    HRESULT __stdcall GetGUID(DWORD kind, GUID* guid) override;

    HRESULT __stdcall EnumConnectionPoints(IEnumConnectionPoints** points) override;
    HRESULT __stdcall FindConnectionPoint(REFIID iid, IConnectionPoint** point) override;

private:
    template <typename Value, typename Out>
    HRESULT get(Value (cMPEGHeader::*property)() const, Out* into) noexcept {
        return give(into, [&] { return (header_.*property)(); });
    }

    template <typename Value, typename In>
    HRESULT let(void (cMPEGHeader::*property)(Value), In value) noexcept {
        return run([&] { (header_.*property)(taken<std::remove_cvref_t<Value>>(value)); });
    }

    // Texts have members of several types.
    HRESULT let(void (cMPEGHeader::*property)(const String&), BSTR value) noexcept {
        return run([&] { (header_.*property)(text_of(value)); });
    }

    template <typename Value, typename In>
    static Value taken(In value) {
        if constexpr (std::is_same_v<Value, bool>) {
            return value != VARIANT_FALSE;
        } else {
            return static_cast<Value>(value);
        }
    }

    cMPEGHeader header_;
    ConnectionPoint events_;
};

}  // namespace brindle::com
