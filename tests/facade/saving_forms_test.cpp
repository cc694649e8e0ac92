// Values as they are set, as they are stored in the file and as they are read back. Hosts rely on
// the pairs that look odd; docs/compatibility.md names them.
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/cMPEGHeader.h>

#include "support/bytes.h"
#include "support/frames.h"
#include "support/memory_environment.h"

namespace brindle {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using test::Bytes;

const String kName = u"song.mp3";
const Bytes kAudio = test::stream({}, 120);

struct Form {
    const char* name;
    std::function<void(cMPEGHeader&)> set;
    std::function<String(const cMPEGHeader&)> get;
    // As held right after the assignment, as read after the first save and after the second.
    String assigned;
    String first;
    String second;
    // The frame as the first save writes it, from its id on.
    Bytes written;
};

void PrintTo(const Form& form, std::ostream* stream) {
    *stream << form.name;
}

String text_of(std::int32_t number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

Form text_form(const char* name, const char* id, void (cMPEGHeader::*set)(const String&),
               String (cMPEGHeader::*get)() const, const String& text, const Bytes& narrow,
               const String& read) {
    return {name,
            [=](cMPEGHeader& header) { (header.*set)(text); },
            [=](const cMPEGHeader& header) { return (header.*get)(); },
            text,
            read,
            read,
            Bytes(id) + test::big_endian(narrow.size() + 1, 4) + test::zeros(3) + narrow};
}

template <typename Number>
Form number_form(const char* name, const char* field, void (cMPEGHeader::*set)(Number),
                 Number (cMPEGHeader::*get)() const, Number number, const Bytes& written,
                 std::int32_t read) {
    const Bytes body = test::zeros(1) + Bytes(field) + test::zeros(1) + written;
    return {name,
            [=](cMPEGHeader& header) { (header.*set)(number); },
            [=](const cMPEGHeader& header) {
                return text_of(static_cast<std::int32_t>((header.*get)()));
            },
            text_of(read),
            text_of(read),
            text_of(read),
            Bytes("TXXX") + test::big_endian(body.size(), 4) + test::zeros(2) + body};
}

std::vector<Form> forms() {
    using H = cMPEGHeader;
    std::vector<Form> forms{
        text_form("Title", "TIT2", &H::Title, &H::Title, u"Song", "Song", u"Song"),
        text_form("EmptyTitle", "TIT2", &H::Title, &H::Title, u"", "", u""),
        text_form("TitleOutsideTheCodePage", "TIT2", &H::Title, &H::Title, u"\u0416\u20AC", "?\x80",
                  u"?\u20AC"),
        text_form("TitleWithSpaces", "TIT2", &H::Title, &H::Title, u" a ", " a ", u" a "),
        text_form("Artist", "TPE1", &H::Artist, &H::Artist, u"Duo", "Duo", u"Duo"),
        text_form("Album", "TALB", &H::Album, &H::Album, u"Disc", "Disc", u"Disc"),
        text_form("Composer", "TCOM", &H::Composer, &H::Composer, u"x", "x", u"x"),
        text_form("Publisher", "TPUB", &H::Publisher, &H::Publisher, u"x", "x", u"x"),
        text_form("CopyRight", "TCOP", &H::CopyRight, &H::CopyRight, u"x", "x", u"x"),
        text_form("Url", "WOAR", &H::URL, &H::ArtistUrl, u"http://x", "http://x", u"http://x"),
        // Language and description of a comment are half missing, so that all of it is text.
        text_form("Comments", "COMM", &H::Comments, &H::Comments, u"x", "\0nt\0x"sv, u"ntx"),
        text_form("EmptyComments", "COMM", &H::Comments, &H::Comments, u"", "\0nt\0"sv, u"nt"),
        // The last digit between the parentheses is not read.
        text_form("Genre17", "TCON", &H::Genre, &H::Genre, u"17", "(17)", u"1"),
        text_form("Genre255", "TCON", &H::Genre, &H::Genre, u"255", "(255)", u"25"),
        text_form("Genre5", "TCON", &H::Genre, &H::Genre, u"5", "(5)", u"0"),
        text_form("Genre0", "TCON", &H::Genre, &H::Genre, u"0", "(0)", u"0"),
        number_form<std::int32_t>("CueIn", "Cue In", &H::CueInmSStart, &H::CueInmSStart, 1500,
                                  "1500", 1500),
        number_form<std::int32_t>("Sectone", "Sec Tone", &H::Sectone, &H::Sectone, -7, "-7", -7),
        number_form<std::int32_t>("Volume", "Volume", &H::Volume, &H::Volume, 2'147'483'647,
                                  "2147483647", 2'147'483'647),
        number_form<std::int32_t>("Opener", "Opener", &H::Opener, &H::Opener, 5, "-1", -1),
        number_form<std::int32_t>("NoOpener", "Opener", &H::Opener, &H::Opener, 0, "0", 0),
        number_form<std::int32_t>("Intro", "Intro", &H::Intro, &H::Intro, 12, "12", 12),
        number_form<std::int32_t>("Outro", "OutromSStart", &H::OutromsStart, &H::OutromsStart, 34,
                                  "34", 34),
        number_form<std::int16_t>("NoFade", "NoFade", &H::NoFade, &H::NoFade, 2, "2", 2),
    };
    const auto year = [](const cMPEGHeader& header) { return text_of(header.Year()); };
    forms.push_back({"Year", [](cMPEGHeader& header) { header.Year(1999); }, year, u"1999", u"1999",
                     u"1999", Bytes("TYER\0\0\0\x05\0\0\0"sv) + Bytes("1999")});
    forms.push_back({"Track", [](cMPEGHeader& header) { header.Track(3); },
                     [](const cMPEGHeader& header) { return text_of(header.Track()); }, u"3", u"3",
                     u"3", Bytes("TRCK\0\0\0\x02\0\0\0"sv) + Bytes("3")});
    // 4,999 characters and the encoding are the longest frame that is read.
    const std::string longest(4999, 'a');
    forms.push_back(text_form("LongestTitle", "TIT2", &H::Title, &H::Title,
                              String(longest.size(), u'a'), longest, String(longest.size(), u'a')));
    return forms;
}

class Forms : public ::testing::TestWithParam<Form> {};

TEST_P(Forms, AreWrittenAndReadBack) {
    const Form& form = GetParam();
    test::MemoryEnvironment world;
    world.files.put(kName, kAudio);
    cMPEGHeader header(world.environment);
    header.FileName(kName);
    form.set(header);
    EXPECT_EQ(form.get(header), form.assigned);
    header.SaveAllInfo();
    EXPECT_EQ(form.get(header), form.assigned);
    const std::string content = world.files.content(kName).text();
    EXPECT_NE(content.find(form.written.text()), std::string::npos);
    header.FileName(kName);
    EXPECT_EQ(form.get(header), form.first);
    header.SaveAllInfo();
    header.FileName(kName);
    EXPECT_EQ(form.get(header), form.second);
}

INSTANTIATE_TEST_SUITE_P(SavingHost, Forms, ::testing::ValuesIn(forms()),
                         [](const auto& run) { return std::string(run.param.name); });

TEST(LongText, OfMoreThan4999CharactersIsWrittenButNotReadBack) {
    test::MemoryEnvironment world;
    world.files.put(kName, kAudio);
    cMPEGHeader header(world.environment);
    header.FileName(kName);
    header.Title(String(5000, u'\u00E9'));
    header.SaveAllInfo();
    const std::string content = world.files.content(kName).text();
    EXPECT_NE(content.find(std::string(5000, '\xE9')), std::string::npos);
    header.FileName(kName);
    EXPECT_NE(header.Title(), String(5000, u'\u00E9'));
}

// Any text that fits a frame and holds no NUL is read back as the code page has it.
RC_GTEST_PROP(AnyText, OfTheCodePageIsReadBack, ()) {
    const auto any_text = [] {
        return *rc::gen::map(
            rc::gen::container<std::string>(rc::gen::inRange<char>(' ', '~')),
            [](const std::string& text) { return String(text.begin(), text.end()); });
    };
    test::MemoryEnvironment world;
    world.files.put(kName, kAudio);
    cMPEGHeader header(world.environment);
    header.FileName(kName);
    const String title = any_text();
    const String album = any_text();
    const String agency = any_text();
    const String comments = any_text();
    header.Title(title);
    header.Album(album);
    header.Agency(agency);
    header.Comments(comments);
    header.SaveAllInfo();
    header.FileName(kName);
    RC_ASSERT(header.Title() == title);
    RC_ASSERT(header.Album() == album);
    RC_ASSERT(header.Agency() == agency);
    RC_ASSERT(header.Comments() == u"nt" + comments);
}

}  // namespace
}  // namespace brindle
