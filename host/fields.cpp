#include "fields.h"

#include <algorithm>
#include <limits>

#include <brindle/text.h>

#include "output/tag_reading.h"

namespace brindle::host {

namespace {

using H = cMPEGHeader;
using Integer = std::int16_t;
using Long = std::int32_t;

template <class T, T (H::*Get)() const>
Variant get(const H& header) {
    return (header.*Get)();
}

template <void (H::*Set)(const String&)>
void set_text(H& header, const Variant& value) {
    (header.*Set)(std::get<String>(value));
}

template <FieldType Type, String (H::*Get)() const, void (H::*Set)(const String&)>
constexpr FieldAccess text_of{Type, get<String, Get>, set_text<Set>};

template <String (H::*Get)() const, void (H::*Set)(const String&)>
constexpr FieldAccess text = text_of<FieldType::Text, Get, Set>;

// Fields of the ID3v1 record are cut when they are written.
template <std::size_t Width, String (H::*Get)() const, void (H::*Set)(const String&)>
constexpr FieldAccess record_text{
    FieldType::Text, [](const H& header) -> Variant { return (header.*Get)().substr(0, Width); },
    set_text<Set>};

template <FieldType Type, class Number, Number (H::*Get)() const, void (H::*Set)(Number)>
constexpr FieldAccess number_of{Type, get<Number, Get>,
                                [](H& header, const Variant& value) {
                                    (header.*Set)(static_cast<Number>(std::get<Long>(value)));
                                },
                                std::numeric_limits<Number>::min(),
                                std::numeric_limits<Number>::max()};

template <class Number, Number (H::*Get)() const, void (H::*Set)(Number)>
constexpr FieldAccess whole = number_of<FieldType::Whole, Number, Get, Set>;

template <Long (H::*Get)() const, void (H::*Set)(Long)>
constexpr FieldAccess milliseconds = number_of<FieldType::Milliseconds, Long, Get, Set>;

// A number that the member takes as text.
template <class Number, String (H::*Get)() const, void (H::*Set)(const String&)>
constexpr FieldAccess digits{FieldType::Whole, get<String, Get>,
                             [](H& header, const Variant& value) {
                                 (header.*Set)(from_utf8(std::to_string(std::get<Long>(value))));
                             },
                             std::numeric_limits<Number>::min(),
                             std::numeric_limits<Number>::max()};

constexpr FieldAccess kTitle{FieldType::Text,
                             [](const H& header) -> Variant { return title_of(header); },
                             set_text<&H::Title>};

constexpr FieldAccess kArtist{FieldType::Text,
                              [](const H& header) -> Variant { return artist_of(header); },
                              set_text<&H::Artist>};

constexpr FieldAccess kSpeed{
    FieldType::Real, get<double, &H::Speed>,
    [](H& header, const Variant& value) { header.Speed(std::get<double>(value)); }};

constexpr FieldAccess kOpener{
    FieldType::YesNo, get<Long, &H::Opener>,
    [](H& header, const Variant& value) { header.Opener(std::get<bool>(value) ? 1 : 0); }};

constexpr FieldAccess kCategory{FieldType::Category, get<Variant, &H::Category>,
                                [](H& header, const Variant& value) { header.Category(value); }};

constexpr FieldAccess kTagType{FieldType::Whole, [](const H& header) -> Variant {
                                   return static_cast<Long>(header.TagType());
                               }};

template <class T, T (H::*Get)() const>
constexpr FieldAccess read{FieldType::Text, get<T, Get>};

constexpr const char* kNone = nullptr;

constexpr Field read_only(int place, const char* key, const FieldAccess& access) {
    return {.place = place, .key = key, .access = access};
}

// clang-format off
constexpr Field kFields[] = {
    {23, "Title",         "--title",          "Title",             "Title",                  u"TIT2", u"TT2", u"",             "--v1-title",  kTitle},
    {33, "Artist",        "--artist",         "Artist",            "Artist",                 u"TPE1", u"TP1", u"",             "--v1-artist", kArtist},
    {38, "Album",         "--album",          "Album",             "Album",                  u"TALB", u"TAL", u"",             kNone,         text<&H::Album, &H::Album>},
    {42, "Year",          "--year",           "Year",              "Year",                   u"TYER", u"TYE", u"",             "--v1-year",   whole<Integer, &H::Year, &H::Year>},
    {41, "Track",         "--track",          "Track",             "Track",                  u"TRCK", u"TRK", u"",             kNone,         whole<Integer, &H::Track, &H::Track>},
    {46, "Genre",         "--genre",          "Genre number",      "Genre by number, 0-255", u"TCON", u"TCO", u"",             kNone,         digits<std::uint8_t, &H::Genre, &H::Genre>},
    {43, "Comments",      "--comment",        "Comment",           "Comment",                u"COMM", u"COM", u"",             kNone,         text<&H::Comments, &H::Comments>},
    {25, "Composer",      "--composer",       "Composer",          "Composer",               u"TCOM", u"TCM", u"",             kNone,         text<&H::Composer, &H::Composer>},
    {26, "Publisher",     "--publisher",      "Publisher",         "Publisher",              u"TPUB", u"TPB", u"",             kNone,         text<&H::Publisher, &H::Publisher>},
    {27, "CopyRight",     "--copyright",      "Copyright",         "Copyright",              u"TCOP", u"TCR", u"",             kNone,         text<&H::CopyRight, &H::CopyRight>},
    {30, "URL",           "--url",            "URL",               "Link of the artist",     u"WOAR", u"WAR", u"",             kNone,         text_of<FieldType::Link, &H::URL, &H::URL>},
    {12, "CueInmSStart",  "--cue-in",         "Cue in",            "Where playback begins",   u"",     u"",    u"Cue In",       kNone,         milliseconds<&H::CueInmSStart, &H::CueInmSStart>},
    {36, "Intro",         "--intro",          "Intro",             "End of the intro",       u"",     u"",    u"Intro",        kNone,         milliseconds<&H::Intro, &H::Intro>},
    {45, "OutromsStart",  "--outro",          "Outro start",       "Start of the outro",     u"",     u"",    u"OutromSStart", kNone,         milliseconds<&H::OutromsStart, &H::OutromsStart>},
    {35, "Sectone",       "--sectone",        "Secondary tone",    "Secondary tone",         u"",     u"",    u"Sec Tone",     kNone,         milliseconds<&H::Sectone, &H::Sectone>},
    {8,  "Speed",         "--speed",          "Speed",             "Playback speed",          u"",     u"",    u"TarnSpeed",    kNone,         kSpeed},
    {9,  "Volume",        "--volume",         "Volume",            "Volume",                 u"",     u"",    u"Volume",       kNone,         whole<Long, &H::Volume, &H::Volume>},
    {10, "Opener",        "--opener",         "Opener",            "The file is an opener",        u"",     u"",    u"Opener",       kNone,         kOpener},
    {37, "Category",      "--category",       "Category",          "Category",               u"",     u"",    u"Category",     kNone,         kCategory},
    {13, "CategoryLevel", "--category-level", "Category level",    "Category level",         u"",     u"",    u"CatLevel",     kNone,         digits<Integer, &H::CategoryLevel, &H::CategoryLevel>},
    {44, "Endstyle",      "--end-style",      "End style",         "How the file ends",            u"",     u"",    u"End",          kNone,         text<&H::Endstyle, &H::Endstyle>},
    {24, "NoFade",        "--no-fade",        "No fade",           "No fade",                u"",     u"",    u"NoFade",       kNone,         whole<Integer, &H::NoFade, &H::NoFade>},
    {28, "Agency",        "--agency",         "Agency",            "Agency",                 u"",     u"",    u"Agency",       kNone,         text<&H::Agency, &H::Agency>},
    {29, "AccountExec",   "--account-exec",   "Account executive", "Account executive",      u"",     u"",    u"Account Exec", kNone,         text<&H::AccountExec, &H::AccountExec>},
    {31, "Copy",          "--copy",           "Copy",              "Copy",                   u"",     u"",    u"Copy",         kNone,         text<&H::Copy, &H::Copy>},
    {49, "Titlev1Tag",    "--v1-title",       "ID3v1 title",       "Title in ID3v1",         u"",     u"",    u"",             kNone,         record_text<30, &H::Titlev1Tag, &H::Titlev1Tag>},
    {48, "artistv1Tag",   "--v1-artist",      "ID3v1 artist",      "Artist in ID3v1",        u"",     u"",    u"",             kNone,         record_text<30, &H::artistv1Tag, &H::artistv1Tag>},
    {50, "Yearv1Tag",     "--v1-year",        "ID3v1 year",        "Year in ID3v1",          u"",     u"",    u"",             kNone,         whole<Integer, &H::Yearv1Tag, &H::Yearv1Tag>},
    {55, "Commentv1",     "--v1-comment",     "ID3v1 comment",     "Comment in ID3v1",       u"",     u"",    u"",             kNone,         record_text<28, &H::Commentv1, &H::Commentv1>},
    // `show` prints these in groups of their own.
    read_only(5, "MonoStereo", read<String, &H::MonoStereo>),
    read_only(6, "BitRate", read<Long, &H::BitRate>),
    read_only(14, "TagType", kTagType),
    read_only(18, "VBR", read<bool, &H::VBR>),
    read_only(19, "Layer", read<String, &H::Layer>),
    read_only(20, "Duration", read<Long, &H::Duration>),
    read_only(21, "Frequency", read<Long, &H::Frequency>),
    read_only(22, "FrameCount", read<Integer, &H::FrameCount>),
    read_only(34, "ArtistUrl", read<String, &H::ArtistUrl>),
    read_only(52, "v2Frames", {FieldType::FrameIds}),
    read_only(53, "v2Tag", {FieldType::FrameValues}),
    read_only(56, "RepairRequired", read<bool, &H::RepairRequired>),
    read_only(57, "ID3TagSizeIncludingHeader", read<Long, &H::ID3TagSizeIncludingHeader>),
    read_only(58, "MpegVersion", read<String, &H::MpegVersion>),
};
// clang-format on

}  // namespace

std::span<const Field> all_fields() {
    return kFields;
}

const std::vector<const Field*>& fields_by_place() {
    static const std::vector<const Field*> sorted = [] {
        std::vector<const Field*> fields;
        for (const Field& field : kFields) {
            fields.push_back(&field);
        }
        std::sort(fields.begin(), fields.end(),
                  [](const Field* a, const Field* b) { return a->place < b->place; });
        return fields;
    }();
    return sorted;
}

}  // namespace brindle::host
