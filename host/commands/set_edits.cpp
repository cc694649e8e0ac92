#include "commands/set_edits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

#include <brindle/text.h>

#include "output/corrupt_tag.h"
#include "output/json_values.h"
#include "output/printable_text.h"

namespace brindle::host {

namespace {

// Frames of more bytes are not read back by hosts.
constexpr std::size_t kLargestBody = 5000;
constexpr std::size_t kEncodingByte = 1;
constexpr std::size_t kLanguage = 3;

const String kCustomFrame = u"TXXX";
const String kVersion2CustomFrame = u"TXX";

struct OptionRow;
struct GivenText {
    std::string text;
    bool unicode = false;
};
using MakeEdit = Edit (*)(const OptionRow& row, const GivenText& given);

struct OptionRow {
    const char* name;
    const char* placeholder;
    const char* help;
    const char* label;
    // Where the value stands, in versions 2.3 and 2.2; "" where it does not. Of scheduling fields
    // the name under which they are kept.
    const char16_t* frame_id;
    const char16_t* version2_id;
    const char16_t* field;
    MakeEdit make;
};

// As this program runs where hosts of Windows do not; there it is the system's own.
constexpr std::string_view kCodePage = "Windows-1252";

[[noreturn]] void refuse(const std::string& option, const std::string& why) {
    throw UsageError(option + ": " + why);
}

// --- Values from the command line.

// What stands in a frame besides a text.
struct Surroundings {
    std::size_t bytes = 0;
    std::size_t characters = 0;  // in the text's encoding
    std::size_t strings = 1;     // with the text's own
};

std::size_t longest_text(const Surroundings& around, bool is_unicode) {
    constexpr std::size_t kMark = 2;
    constexpr std::size_t kUnit = 2;
    const std::size_t room = kLargestBody - kEncodingByte - around.bytes;
    const std::size_t characters = is_unicode ? (room - around.strings * kMark) / kUnit : room;
    return characters - std::min(characters, around.characters);
}

bool is_utf8(const String& text) {
    constexpr char16_t kFirstStrayByte = 0xDC80;
    constexpr char16_t kLastStrayByte = 0xDCFF;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_pair = i > 0 && text[i - 1] >= 0xD800 && text[i - 1] < 0xDC00;
        if (text[i] >= kFirstStrayByte && text[i] <= kLastStrayByte && !is_pair) {
            return false;
        }
    }
    return true;
}

String checked_text(const std::string& option, const GivenText& given,
                    const Surroundings& around = {}) {
    String text = from_utf8(given.text);
    if (!is_utf8(text)) {
        refuse(option, "the text is no UTF-8");
    }
    const bool needs_unicode = !fits_code_page(text);
    if (needs_unicode && !given.unicode) {
        refuse(option, "hosts read text of " + std::string(kCodePage) + ", which does not hold " +
                           in_quotes(text) + "; --unicode writes it all the same");
    }
    const std::size_t longest = longest_text(around, needs_unicode);
    if (text.size() > longest) {
        refuse(option, "the text has " + std::to_string(text.size()) + " characters; more than " +
                           std::to_string(longest) + " could not be read back");
    }
    return text;
}

std::int32_t checked_whole(const OptionRow& row, const std::string& given, std::int32_t least,
                           std::int32_t most) {
    std::string_view digits = given;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') {
        digits.remove_prefix(1);
    }
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size()) {
        refuse(row.name, "'" + given + "' is no whole number");
    }
    if (error != std::errc() || number < least || number > most) {
        refuse(row.name, given + " is not in the range of " + std::to_string(least) + " to " +
                             std::to_string(most));
    }
    return number;
}

double checked_real(const OptionRow& row, const std::string& given) {
    constexpr const char* kCharacters = "+-.0123456789eE";
    char* end = nullptr;
    const double number = std::strtod(given.c_str(), &end);
    if (given.empty() || given.find_first_not_of(kCharacters) != std::string::npos ||
        end != given.c_str() + given.size()) {
        refuse(row.name, "'" + given + "' is no number");
    }
    if (!std::isfinite(number)) {
        refuse(row.name, given + " is too large");
    }
    return number;
}

// --- Edits by the type of their member.

Edit edit_of(const OptionRow& row) {
    Edit edit;
    edit.shown.label = row.label;
    const bool is_custom = row.field[0] != u'\0';
    edit.frame_id = is_custom ? kCustomFrame : row.frame_id;
    edit.version2_id = is_custom ? kVersion2CustomFrame : row.version2_id;
    edit.field_name = row.field;
    return edit;
}

Surroundings around(const OptionRow& row) {
    const std::u16string_view name = row.field;
    return name.empty() ? Surroundings()
                        : Surroundings{.characters = name.size() + 1, .strings = 2};
}

template <void (cMPEGHeader::*Set)(const String&), String (cMPEGHeader::*Get)() const>
Edit text(const OptionRow& row, const GivenText& given) {
    Edit edit = edit_of(row);
    edit.assign = [value = checked_text(row.name, given, around(row))](cMPEGHeader& header) {
        (header.*Set)(value);
    };
    edit.shown.text = [](const cMPEGHeader& header) { return in_quotes((header.*Get)()); };
    return edit;
}

Edit title(const OptionRow& row, const GivenText& given) {
    Edit edit = text<&cMPEGHeader::Title, &cMPEGHeader::Title>(row, given);
    edit.shown.text = [](const cMPEGHeader& header) { return in_quotes(title_of(header)); };
    return edit;
}

Edit artist(const OptionRow& row, const GivenText& given) {
    Edit edit = text<&cMPEGHeader::Artist, &cMPEGHeader::Artist>(row, given);
    edit.shown.text = [](const cMPEGHeader& header) { return in_quotes(artist_of(header)); };
    return edit;
}

// The record's fields are cut when they are written.
template <std::size_t Width, void (cMPEGHeader::*Set)(const String&),
          String (cMPEGHeader::*Get)() const>
Edit record_text(const OptionRow& row, const GivenText& given) {
    Edit edit = text<Set, Get>(row, given);
    edit.shown.text = [](const cMPEGHeader& header) {
        return in_quotes((header.*Get)().substr(0, Width));
    };
    return edit;
}

Edit comment(const OptionRow& row, const GivenText& given) {
    // An empty description has a terminator.
    static_cast<void>(
        checked_text(row.name, given, {.bytes = kLanguage, .characters = 1, .strings = 2}));
    return text<&cMPEGHeader::Comments, &cMPEGHeader::Comments>(row, given);
}

// Links are always 8-bit text.
Edit link(const OptionRow& row, const GivenText& given) {
    static_cast<void>(checked_text(row.name, {given.text, false}));
    return text<&cMPEGHeader::URL, &cMPEGHeader::URL>(row, given);
}

template <class Number, void (cMPEGHeader::*Set)(Number), Number (cMPEGHeader::*Get)() const>
Edit whole(const OptionRow& row, const GivenText& given) {
    using Limits = std::numeric_limits<Number>;
    const auto value =
        static_cast<Number>(checked_whole(row, given.text, Limits::min(), Limits::max()));
    Edit edit = edit_of(row);
    edit.assign = [value](cMPEGHeader& header) { (header.*Set)(value); };
    edit.shown.text = [](const cMPEGHeader& header) { return std::to_string((header.*Get)()); };
    return edit;
}

// Set in the ID3v1 record along with the tag, unless the two are separate.
template <MakeEdit Make, MakeEdit MakeInRecord>
Edit in_both(const OptionRow& row, const GivenText& given) {
    Edit edit = Make(row, given);
    edit.shown_in_record = {std::string("ID3v1 ") + std::string(row.name).substr(2),
                            MakeInRecord(row, given).shown.text};
    return edit;
}

// Numbers that the member takes as text.
template <std::int32_t Least, std::int32_t Most, void (cMPEGHeader::*Set)(const String&),
          String (cMPEGHeader::*Get)() const>
Edit whole_as_text(const OptionRow& row, const GivenText& given) {
    const String value = from_utf8(std::to_string(checked_whole(row, given.text, Least, Most)));
    Edit edit = edit_of(row);
    edit.assign = [value](cMPEGHeader& header) { (header.*Set)(value); };
    edit.shown.text = [](const cMPEGHeader& header) { return printable((header.*Get)()); };
    return edit;
}

Edit speed(const OptionRow& row, const GivenText& given) {
    Edit edit = edit_of(row);
    edit.assign = [value = checked_real(row, given.text)](cMPEGHeader& header) {
        header.Speed(value);
    };
    edit.shown.text = [](const cMPEGHeader& header) { return to_json(header.Speed()).dump(); };
    return edit;
}

Edit category(const OptionRow& row, const GivenText& given) {
    Edit edit = edit_of(row);
    edit.assign = [value = checked_text(row.name, given, around(row))](cMPEGHeader& header) {
        header.Category(Variant(value));
    };
    edit.shown.text = [](const cMPEGHeader& header) { return to_json(header.Category()).dump(); };
    return edit;
}

Edit opener(const OptionRow& row, bool value) {
    Edit edit = edit_of(row);
    edit.assign = [value](cMPEGHeader& header) { header.Opener(value ? 1 : 0); };
    edit.shown.text = [](const cMPEGHeader& header) {
        return std::string(header.Opener() != 0 ? "yes" : "no");
    };
    return edit;
}

using H = cMPEGHeader;
using Integer = std::int16_t;
using Long = std::int32_t;
constexpr std::size_t kRecordName = 30;
constexpr std::size_t kRecordComment = 28;
constexpr std::int32_t kLeastInteger = std::numeric_limits<Integer>::min();
constexpr std::int32_t kMostInteger = std::numeric_limits<Integer>::max();
constexpr std::int32_t kMostByte = std::numeric_limits<std::uint8_t>::max();

constexpr MakeEdit kTitleInRecord = record_text<kRecordName, &H::Titlev1Tag, &H::Titlev1Tag>;
constexpr MakeEdit kArtistInRecord = record_text<kRecordName, &H::artistv1Tag, &H::artistv1Tag>;
constexpr MakeEdit kYearInRecord = whole<Integer, &H::Yearv1Tag, &H::Yearv1Tag>;
constexpr MakeEdit kCommentInRecord = record_text<kRecordComment, &H::Commentv1, &H::Commentv1>;

// In the order in which they are assigned.
constexpr OptionRow kOptions[] = {
    // clang-format off
    {"--title",          "TEXT",  "Title",                   "Title",          u"TIT2", u"TT2", u"",             in_both<title, kTitleInRecord>},
    {"--artist",         "TEXT",  "Artist",                  "Artist",         u"TPE1", u"TP1", u"",             in_both<artist, kArtistInRecord>},
    {"--album",          "TEXT",  "Album",                   "Album",          u"TALB", u"TAL", u"",             text<&H::Album, &H::Album>},
    {"--year",           "N",     "Year",                    "Year",           u"TYER", u"TYE", u"",             in_both<whole<Integer, &H::Year, &H::Year>, kYearInRecord>},
    {"--track",          "N",     "Track",                   "Track",          u"TRCK", u"TRK", u"",             whole<Integer, &H::Track, &H::Track>},
    {"--genre",          "N",     "Genre by number, 0-255",  "Genre number",   u"TCON", u"TCO", u"",             whole_as_text<0, kMostByte, &H::Genre, &H::Genre>},
    {"--comment",        "TEXT",  "Comment",                 "Comment",        u"COMM", u"COM", u"",             comment},
    {"--composer",       "TEXT",  "Composer",                "Composer",       u"TCOM", u"TCM", u"",             text<&H::Composer, &H::Composer>},
    {"--publisher",      "TEXT",  "Publisher",               "Publisher",      u"TPUB", u"TPB", u"",             text<&H::Publisher, &H::Publisher>},
    {"--copyright",      "TEXT",  "Copyright",               "Copyright",      u"TCOP", u"TCR", u"",             text<&H::CopyRight, &H::CopyRight>},
    {"--url",            "TEXT",  "Link of the artist",      "URL",            u"WOAR", u"WAR", u"",             link},
    {"--cue-in",         "MS",    "Where playing begins",    "Cue in",         u"",     u"",    u"Cue In",       whole<Long, &H::CueInmSStart, &H::CueInmSStart>},
    {"--intro",          "MS",    "End of the intro",        "Intro",          u"",     u"",    u"Intro",        whole<Long, &H::Intro, &H::Intro>},
    {"--outro",          "MS",    "Start of the outro",      "Outro",          u"",     u"",    u"OutromSStart", whole<Long, &H::OutromsStart, &H::OutromsStart>},
    {"--sectone",        "MS",    "Secondary tone",          "Secondary tone", u"",     u"",    u"Sec Tone",     whole<Long, &H::Sectone, &H::Sectone>},
    {"--speed",          "X",     "Playing speed",           "Speed",          u"",     u"",    u"TarnSpeed",    speed},
    {"--volume",         "N",     "Volume",                  "Volume",         u"",     u"",    u"Volume",       whole<Long, &H::Volume, &H::Volume>},
    {"--opener",         nullptr, "It is an opener",         "Opener",         u"",     u"",    u"Opener",       nullptr},
    {"--category",       "TEXT",  "Category",                "Category",       u"",     u"",    u"Category",     category},
    {"--category-level", "N",     "Category level",          "Category level", u"",     u"",    u"CatLevel",     whole_as_text<kLeastInteger, kMostInteger, &H::CategoryLevel, &H::CategoryLevel>},
    {"--end-style",      "TEXT",  "How it ends",             "End style",      u"",     u"",    u"End",          text<&H::Endstyle, &H::Endstyle>},
    {"--no-fade",        "N",     "No fade",                 "No fade",        u"",     u"",    u"NoFade",       whole<Integer, &H::NoFade, &H::NoFade>},
    {"--agency",         "TEXT",  "Agency",                  "Agency",         u"",     u"",    u"Agency",       text<&H::Agency, &H::Agency>},
    {"--account-exec",   "TEXT",  "Account executive",       "Account exec",   u"",     u"",    u"Account Exec", text<&H::AccountExec, &H::AccountExec>},
    {"--copy",           "TEXT",  "Copy",                    "Copy",           u"",     u"",    u"Copy",         text<&H::Copy, &H::Copy>},
    {"--v1-title",       "TEXT",  "Title in ID3v1",          "ID3v1 title",    u"",     u"",    u"",             kTitleInRecord},
    {"--v1-artist",      "TEXT",  "Artist in ID3v1",         "ID3v1 artist",   u"",     u"",    u"",             kArtistInRecord},
    {"--v1-year",        "N",     "Year in ID3v1",           "ID3v1 year",     u"",     u"",    u"",             kYearInRecord},
    {"--v1-comment",     "TEXT",  "Comment in ID3v1",        "ID3v1 comment",  u"",     u"",    u"",             kCommentInRecord},
    // clang-format on
};

Edit custom_field(const GivenText& given) {
    const std::string option = "--field";
    const std::size_t equals = given.text.find('=');
    if (equals == std::string::npos) {
        refuse(option, "'" + given.text + "' is not of the form NAME=VALUE");
    }
    if (equals == 0) {
        refuse(option, "the field has no name");
    }
    // Name and value share one frame, and one encoding.
    static_cast<void>(checked_text(option, given, {.strings = 2}));
    const String name = from_utf8(given.text.substr(0, equals));
    const String value = from_utf8(given.text.substr(equals + 1));
    Edit edit;
    edit.shown.label = "Field " + in_quotes(name);
    edit.shown.text = [name](const cMPEGHeader& header) {
        return header.CustomFieldExists(name) ? to_json(header.CustomFieldRetrieve(name)).dump()
                                              : std::string("null");
    };
    edit.assign = [name, value](cMPEGHeader& header) {
        header.CustomFieldAdd(name, Variant(value));
    };
    edit.frame_id = kCustomFrame;
    edit.version2_id = kVersion2CustomFrame;
    edit.field_name = name;
    return edit;
}

}  // namespace

struct GivenEdits {
    std::map<std::string, std::string> values;  // by the name of the option
    bool opener = false;
    bool no_opener = false;
    std::vector<std::string> fields;
};

EditOptions::EditOptions() : given_(std::make_unique<GivenEdits>()) {}

EditOptions::~EditOptions() = default;

void EditOptions::add_to(CommandOptions& command) {
    GivenEdits& given = *given_;
    for (const OptionRow& row : kOptions) {
        if (row.make == nullptr) {
            command.flag(row.name, given.opener, row.help);
            command.flag("--no-opener", given.no_opener, "It is none");
            command.exclusive(row.name, "--no-opener");
            continue;
        }
        command.text(
            row.name, row.placeholder,
            [&given, name = row.name](const std::string& value) { given.values[name] = value; },
            row.help);
    }
    command.texts("--field", "NAME=VALUE", given.fields,
                  "Custom field; may be given several times");
}

std::vector<Edit> EditOptions::edits(bool unicode) const {
    std::vector<Edit> edits;
    for (const OptionRow& row : kOptions) {
        const auto value = given_->values.find(row.name);
        if (value != given_->values.end()) {
            edits.push_back(row.make(row, {value->second, unicode}));
        } else if (row.make == nullptr && (given_->opener || given_->no_opener)) {
            edits.push_back(opener(row, given_->opener));
        }
    }
    for (const std::string& field : given_->fields) {
        edits.push_back(custom_field({field, unicode}));
    }
    return edits;
}

}  // namespace brindle::host
