#include "util/wildcard.h"

#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/values.h>

namespace brindle {
namespace {

TEST(Wildcard, MatchesTheWholeName) {
    struct Case {
        const char16_t* pattern;
        const char16_t* name;
        bool matches;
    };
    const Case cases[] = {
        {u"", u"", true},
        {u"", u"a", false},
        {u"a", u"a", true},
        {u"a", u"A", false},
        {u"a", u"ab", false},
        {u"ab", u"a", false},
        {u"?", u"a", true},
        {u"?", u"", false},
        {u"?", u"ab", false},
        {u"*", u"", true},
        {u"*", u"anything.mp3", true},
        {u"*.mp3", u"song.mp3", true},
        {u"*.mp3", u".mp3", true},
        {u"*.mp3", u"song.mp3.bak", false},
        {u"*.mp3", u"song.mp2", false},
        {u"song*", u"song", true},
        {u"so*ng?.mp3", u"soooong1.mp3", true},
        {u"so*ng?.mp3", u"soooong.mp3", false},
        {u"*a*b*", u"xxaxxbxx", true},
        {u"*a*b*", u"xxbxxaxx", false},
        {u"a*a", u"a", false},
        {u"a*aab", u"aaaab", true},
        {u"***", u"x", true},
        {u"*?", u"", false},
        {u"*?*?", u"ab", true},
        {u"[ab]", u"a", false},
        {u"\u00E9*", u"\u00E9t\u00E9", true},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(matches_wildcard(row.pattern, row.name), row.matches)
            << testing::PrintToString(row.pattern) << testing::PrintToString(row.name);
    }
}

TEST(Wildcard, KnowsWhichNamesHaveOne) {
    EXPECT_TRUE(has_wildcard(u"a*"));
    EXPECT_TRUE(has_wildcard(u"?a"));
    EXPECT_FALSE(has_wildcard(u"[a].mp3"));
    EXPECT_FALSE(has_wildcard(u""));
}

TEST(Wildcard, ManyRunsThatNeverMatchTakeNoTime) {
    // Trying every way to split the name over these runs would outlast the test by far.
    String pattern;
    for (int i = 0; i < 50; ++i) {
        pattern += u"a*";
    }
    EXPECT_FALSE(matches_wildcard(pattern + u"b", String(255, u'a')));
    EXPECT_TRUE(matches_wildcard(pattern, String(255, u'a')));
}

// What the signs mean, said the slow way.
bool matches_slowly(const String& pattern, const String& name) {
    if (pattern.empty()) {
        return name.empty();
    }
    if (pattern[0] == u'*') {
        return matches_slowly(pattern.substr(1), name) ||
               (!name.empty() && matches_slowly(pattern, name.substr(1)));
    }
    return !name.empty() && (pattern[0] == u'?' || pattern[0] == name[0]) &&
           matches_slowly(pattern.substr(1), name.substr(1));
}

String text_of(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

RC_GTEST_PROP(Wildcard, AgreesWithTheSlowWay, ()) {
    const String pattern = text_of(*rc::gen::resize(
        10, rc::gen::container<std::string>(rc::gen::elementOf(std::string("aabb?**")))));
    const String name =
        text_of(*rc::gen::resize(12, rc::gen::container<std::string>(rc::gen::element('a', 'b'))));
    RC_ASSERT(matches_wildcard(pattern, name) == matches_slowly(pattern, name));
}

}  // namespace
}  // namespace brindle
