// The members of _cMPEGHeader, as Brindle.idl declares them.
#include "facade/com/header_object.h"

namespace brindle::com {
namespace {

constexpr Parameter kText[] = {{L"Value", VT_BSTR}};
constexpr Parameter kLong[] = {{L"Value", VT_I4}};
constexpr Parameter kInteger[] = {{L"Value", VT_I2}};
constexpr Parameter kDouble[] = {{L"Value", VT_R8}};
constexpr Parameter kBoolean[] = {{L"Value", VT_BOOL}};
constexpr Parameter kVariant[] = {{L"Value", VT_VARIANT}};
constexpr Parameter kFileName[] = {{L"NewFileName", VT_BYREF | VT_BSTR}};
constexpr Parameter kProgress[] = {{L"FileName", VT_BSTR},
                                   {L"FilePos", VT_I4},
                                   {L"FileLength", VT_I4},
                                   {L"Cancel", VT_BYREF | VT_BOOL}};
constexpr Parameter kField[] = {{L"FieldDescriptor", VT_BSTR}};
constexpr Parameter kFieldAndValue[] = {{L"FieldDescriptor", VT_BSTR}, {L"FieldValue", VT_VARIANT}};
constexpr Parameter kTagTypes[] = {{L"eTagTypes", VT_I4}};
constexpr Parameter kTime[] = {
    {L"ms", VT_I4}, {L"TimeStyle", VT_I4, true}, {L"UsePadding", VT_BYREF | VT_BOOL, true}};
constexpr Parameter kFrame[] = {{L"sFrame", VT_BSTR}, {L"indexInFrame", VT_I4}};

// In the order of the interface's functions.
constexpr Member kMembers[] = {
    get(1, L"g_InUse", VT_BOOL),
    put(1, L"g_InUse", kBoolean),
    get(2, L"TimeStyle", VT_I4),
    put(2, L"TimeStyle", kLong),
    method(3, L"RaiseScanningEvent", VT_EMPTY, kProgress),
    method(4, L"SaveAllInfo"),
    get(5, L"MonoStereo", VT_BSTR),
    get(6, L"BitRate", VT_I4),
    put(7, L"FileName", kFileName),
    get(8, L"Speed", VT_R8),
    put(8, L"Speed", kDouble),
    get(9, L"Volume", VT_I4),
    put(9, L"Volume", kLong),
    get(10, L"Opener", VT_I4),
    put(10, L"Opener", kLong),
    get(7, L"FileName", VT_BSTR),
    get(12, L"CueInmSStart", VT_I4),
    put(12, L"CueInmSStart", kLong),
    get(13, L"CategoryLevel", VT_BSTR),
    put(13, L"CategoryLevel", kText),
    get(14, L"TagType", VT_I4),
    method(15, L"CustomFieldAdd", VT_EMPTY, kFieldAndValue),
    method(16, L"CustomFieldExists", VT_BOOL, kField),
    method(17, L"CustomFieldRetrieve", VT_VARIANT, kField),
    get(18, L"VBR", VT_BOOL),
    get(19, L"Layer", VT_BSTR),
    get(20, L"Duration", VT_I4),
    get(21, L"Frequency", VT_I4),
    get(22, L"FrameCount", VT_I2),
    get(23, L"Title", VT_BSTR),
    put(23, L"Title", kText),
    get(24, L"NoFade", VT_I2),
    put(24, L"NoFade", kInteger),
    put(25, L"Composer", kText),
    get(25, L"Composer", VT_BSTR),
    get(26, L"Publisher", VT_BSTR),
    put(26, L"Publisher", kText),
    put(27, L"CopyRight", kText),
    get(27, L"CopyRight", VT_BSTR),
    get(28, L"Agency", VT_BSTR),
    put(28, L"Agency", kText),
    get(29, L"AccountExec", VT_BSTR),
    put(29, L"AccountExec", kText),
    get(30, L"URL", VT_BSTR),
    put(30, L"URL", kText),
    get(31, L"Copy", VT_BSTR),
    put(31, L"Copy", kText),
    put(32, L"Song", kText),
    get(33, L"Artist", VT_BSTR),
    put(33, L"Artist", kText),
    get(34, L"ArtistUrl", VT_BSTR),
    put(34, L"ArtistUrl", kText),
    put(35, L"Sectone", kLong),
    get(35, L"Sectone", VT_I4),
    put(36, L"Intro", kLong),
    get(36, L"Intro", VT_I4),
    put(37, L"Category", kVariant),
    get(37, L"Category", VT_VARIANT),
    get(38, L"Album", VT_BSTR),
    method(39, L"Test"),
    put(38, L"Album", kText),
    get(41, L"Track", VT_I2),
    put(41, L"Track", kInteger),
    get(42, L"Year", VT_I2),
    put(42, L"Year", kInteger),
    get(43, L"Comments", VT_BSTR),
    put(43, L"Comments", kText),
    put(44, L"Endstyle", kText),
    get(44, L"Endstyle", VT_BSTR),
    put(45, L"OutromsStart", kLong),
    get(45, L"OutromsStart", VT_I4),
    get(46, L"Genre", VT_BSTR),
    put(46, L"Genre", kText),
    method(47, L"StripTags", VT_BOOL, kTagTypes),
    get(48, L"artistv1Tag", VT_BSTR),
    put(48, L"artistv1Tag", kText),
    put(49, L"Titlev1Tag", kText),
    get(49, L"Titlev1Tag", VT_BSTR),
    get(50, L"Yearv1Tag", VT_I2),
    put(50, L"Yearv1Tag", kInteger),
    method(51, L"ElapsedTimeFromMs", VT_BSTR, kTime),
    get(52, L"v2Frames", VT_DISPATCH),
    get(53, L"v2Tag", VT_BSTR, kFrame),
    put(54, L"Writev1v2Separate", kBoolean),
    get(54, L"Writev1v2Separate", VT_BOOL),
    put(55, L"Commentv1", kText),
    get(55, L"Commentv1", VT_BSTR),
    get(56, L"RepairRequired", VT_BOOL),
    method(57, L"ID3TagSizeIncludingHeader", VT_I4),
};

}  // namespace

template <>
Members members_of<::_cMPEGHeader>() noexcept {
    return kMembers;
}

}  // namespace brindle::com
