#include "commands/repaired_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string_view>

#include <brindle/text.h>

#include "commands/misread_code_page.h"

namespace brindle::host {

namespace {

using namespace std::string_view_literals;

constexpr const char* kUtf8 = "utf-8";

// 80 to FF of each code page; 0 is not assigned, or a control character.
// clang-format off
constexpr std::u16string_view kWindows1251 =
    u"\u0402\u0403\u201A\u0453\u201E\u2026\u2020\u2021\u20AC\u2030\u0409\u2039\u040A\u040C\u040B\u040F"
    u"\u0452\u2018\u2019\u201C\u201D\u2022\u2013\u2014\0\u2122\u0459\u203A\u045A\u045C\u045B\u045F"
    u"\u00A0\u040E\u045E\u0408\u00A4\u0490\u00A6\u00A7\u0401\u00A9\u0404\u00AB\u00AC\u00AD\u00AE\u0407"
    u"\u00B0\u00B1\u0406\u0456\u0491\u00B5\u00B6\u00B7\u0451\u2116\u0454\u00BB\u0458\u0405\u0455\u0457"
    u"\u0410\u0411\u0412\u0413\u0414\u0415\u0416\u0417\u0418\u0419\u041A\u041B\u041C\u041D\u041E\u041F"
    u"\u0420\u0421\u0422\u0423\u0424\u0425\u0426\u0427\u0428\u0429\u042A\u042B\u042C\u042D\u042E\u042F"
    u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439\u043A\u043B\u043C\u043D\u043E\u043F"
    u"\u0440\u0441\u0442\u0443\u0444\u0445\u0446\u0447\u0448\u0449\u044A\u044B\u044C\u044D\u044E\u044F"sv;

constexpr std::u16string_view kKoi8R =
    u"\u2500\u2502\u250C\u2510\u2514\u2518\u251C\u2524\u252C\u2534\u253C\u2580\u2584\u2588\u258C\u2590"
    u"\u2591\u2592\u2593\u2320\u25A0\u2219\u221A\u2248\u2264\u2265\u00A0\u2321\u00B0\u00B2\u00B7\u00F7"
    u"\u2550\u2551\u2552\u0451\u2553\u2554\u2555\u2556\u2557\u2558\u2559\u255A\u255B\u255C\u255D\u255E"
    u"\u255F\u2560\u2561\u0401\u2562\u2563\u2564\u2565\u2566\u2567\u2568\u2569\u256A\u256B\u256C\u00A9"
    u"\u044E\u0430\u0431\u0446\u0434\u0435\u0444\u0433\u0445\u0438\u0439\u043A\u043B\u043C\u043D\u043E"
    u"\u043F\u044F\u0440\u0441\u0442\u0443\u0436\u0432\u044C\u044B\u0437\u0448\u044D\u0449\u0447\u044A"
    u"\u042E\u0410\u0411\u0426\u0414\u0415\u0424\u0413\u0425\u0418\u0419\u041A\u041B\u041C\u041D\u041E"
    u"\u041F\u042F\u0420\u0421\u0422\u0423\u0416\u0412\u042C\u042B\u0417\u0428\u042D\u0429\u0427\u042A"sv;

constexpr std::u16string_view kIso8859_5 =
    u"\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    u"\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    u"\u00A0\u0401\u0402\u0403\u0404\u0405\u0406\u0407\u0408\u0409\u040A\u040B\u040C\u00AD\u040E\u040F"
    u"\u0410\u0411\u0412\u0413\u0414\u0415\u0416\u0417\u0418\u0419\u041A\u041B\u041C\u041D\u041E\u041F"
    u"\u0420\u0421\u0422\u0423\u0424\u0425\u0426\u0427\u0428\u0429\u042A\u042B\u042C\u042D\u042E\u042F"
    u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439\u043A\u043B\u043C\u043D\u043E\u043F"
    u"\u0440\u0441\u0442\u0443\u0444\u0445\u0446\u0447\u0448\u0449\u044A\u044B\u044C\u044D\u044E\u044F"
    u"\u2116\u0451\u0452\u0453\u0454\u0455\u0456\u0457\u0458\u0459\u045A\u045B\u045C\u00A7\u045E\u045F"sv;

constexpr std::u16string_view kWindows1253 =
    u"\u20AC\0\u201A\u0192\u201E\u2026\u2020\u2021\0\u2030\0\u2039\0\0\0\0"
    u"\0\u2018\u2019\u201C\u201D\u2022\u2013\u2014\0\u2122\0\u203A\0\0\0\0"
    u"\u00A0\u0385\u0386\u00A3\u00A4\u00A5\u00A6\u00A7\u00A8\u00A9\0\u00AB\u00AC\u00AD\u00AE\u2015"
    u"\u00B0\u00B1\u00B2\u00B3\u0384\u00B5\u00B6\u00B7\u0388\u0389\u038A\u00BB\u038C\u00BD\u038E\u038F"
    u"\u0390\u0391\u0392\u0393\u0394\u0395\u0396\u0397\u0398\u0399\u039A\u039B\u039C\u039D\u039E\u039F"
    u"\u03A0\u03A1\0\u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\u03AA\u03AB\u03AC\u03AD\u03AE\u03AF"
    u"\u03B0\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6\u03B7\u03B8\u03B9\u03BA\u03BB\u03BC\u03BD\u03BE\u03BF"
    u"\u03C0\u03C1\u03C2\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9\u03CA\u03CB\u03CC\u03CD\u03CE\0"sv;

constexpr std::u16string_view kIso8859_7 =
    u"\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    u"\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    u"\u00A0\u2018\u2019\u00A3\u20AC\u20AF\u00A6\u00A7\u00A8\u00A9\u037A\u00AB\u00AC\u00AD\0\u2015"
    u"\u00B0\u00B1\u00B2\u00B3\u0384\u0385\u0386\u00B7\u0388\u0389\u038A\u00BB\u038C\u00BD\u038E\u038F"
    u"\u0390\u0391\u0392\u0393\u0394\u0395\u0396\u0397\u0398\u0399\u039A\u039B\u039C\u039D\u039E\u039F"
    u"\u03A0\u03A1\0\u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\u03AA\u03AB\u03AC\u03AD\u03AE\u03AF"
    u"\u03B0\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6\u03B7\u03B8\u03B9\u03BA\u03BB\u03BC\u03BD\u03BE\u03BF"
    u"\u03C0\u03C1\u03C2\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9\u03CA\u03CB\u03CC\u03CD\u03CE\0"sv;
// clang-format on

// --- Scripts

bool is_between(char16_t unit, char16_t first, char16_t last) {
    return unit >= first && unit <= last;
}

bool is_ascii_letter(char16_t unit) {
    return is_between(unit, u'A', u'Z') || is_between(unit, u'a', u'z');
}

// How the letters of a word are written.
enum class LetterCase { None, Upper, Lower };

LetterCase cyrillic_case(char16_t unit) {
    if (is_between(unit, 0x0400, 0x042F) || unit == 0x0490) {
        return LetterCase::Upper;
    }
    return is_between(unit, 0x0430, 0x045F) || unit == 0x0491 ? LetterCase::Lower
                                                              : LetterCase::None;
}

LetterCase greek_case(char16_t unit) {
    constexpr std::u16string_view kUpperWithAccent = u"\u0386\u0388\u0389\u038A\u038C\u038E\u038F";
    constexpr char16_t kLowerIota = 0x0390;
    if (is_between(unit, 0x0391, 0x03AB) || kUpperWithAccent.find(unit) != String::npos) {
        return LetterCase::Upper;
    }
    return unit == kLowerIota || is_between(unit, 0x03AC, 0x03CE) ? LetterCase::Lower
                                                                  : LetterCase::None;
}

struct CodePage {
    const char* name;
    std::u16string_view upper_half;
    LetterCase (*case_of)(char16_t unit);
    std::u16string_view usual_letters;  // three quarters of the letters of a text
};

constexpr std::u16string_view kUsualCyrillic =
    u"\u043E\u0435\u0430\u0438\u043D\u0442\u0441\u0440\u0432\u043B\u043A"
    u"\u041E\u0415\u0410\u0418\u041D\u0422\u0421\u0420\u0412\u041B\u041A";
constexpr std::u16string_view kUsualGreek =
    u"\u03B1\u03BF\u03B9\u03B5\u03C4\u03C3\u03C2\u03BD\u03B7\u03C5\u03C1"
    u"\u03AC\u03AD\u03AE\u03AF\u03CC\u03CD\u03CE"
    u"\u0391\u039F\u0399\u0395\u03A4\u03A3\u039D\u0397\u03A5\u03A1";

constexpr std::array kPages{
    CodePage{"windows-1251", kWindows1251, cyrillic_case, kUsualCyrillic},
    CodePage{"koi8-r", kKoi8R, cyrillic_case, kUsualCyrillic},
    CodePage{"iso-8859-5", kIso8859_5, cyrillic_case, kUsualCyrillic},
    CodePage{"windows-1253", kWindows1253, greek_case, kUsualGreek},
    CodePage{"iso-8859-7", kIso8859_7, greek_case, kUsualGreek},
};

// --- Readings

// Quotation marks, dashes and the like, which text of every script has.
bool is_mark(char16_t unit) {
    constexpr std::u16string_view kMarks =
        u"\u00A0\u00A9\u00AB\u00AE\u00B0\u00B7\u00BB\u2013\u2014\u2015\u2018\u2019\u201A"
        u"\u201C\u201D\u201E\u2022\u2026\u2039\u203A\u2116\u2122";
    return kMarks.find(unit) != std::u16string_view::npos;
}

struct Reading {
    String text;
    std::size_t letters = 0;
    std::size_t usual_letters = 0;

    // Too few letters more of a hundred are usual ones than in the other reading.
    [[nodiscard]] bool is_hardly_better_than(const Reading& other) const {
        constexpr std::size_t kHundred = 100;
        constexpr std::size_t kLead = 10;
        return usual_letters * other.letters * kHundred <
               other.usual_letters * letters * kHundred + kLead * letters * other.letters;
    }
};

// Whether words are of one script, and lower case, upper case or with a capital at their start.
class WordRules {
public:
    explicit WordRules(const CodePage& page) : page_(page) {}

    // False once a rule is broken.
    bool take(char16_t unit) {
        const LetterCase letter = page_.case_of(unit);
        if (letter == LetterCase::None && !is_ascii_letter(unit)) {
            length_ = 0;
            has_ascii_ = false;
            return true;
        }
        if (length_ > 0 && has_ascii_ != (letter == LetterCase::None)) {
            return false;
        }
        has_ascii_ = letter == LetterCase::None;
        // The second letter of a word decides on the others.
        const bool fits =
            has_ascii_ || length_ == 0 ||
            (length_ == 1 ? first_ == LetterCase::Upper || letter == first_ : letter == second_);
        first_ = length_ == 0 ? letter : first_;
        second_ = length_ == 1 ? letter : second_;
        ++length_;
        return fits;
    }

private:
    const CodePage& page_;
    std::size_t length_ = 0;
    bool has_ascii_ = false;
    LetterCase first_ = LetterCase::None;
    LetterCase second_ = LetterCase::None;
};

// None if the bytes make no text of the page.
std::optional<Reading> read_as(const CodePage& page, std::string_view bytes) {
    constexpr std::uint8_t kFirstHigh = 0x80;
    Reading reading;
    WordRules words(page);
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        const bool is_ascii = byte < kFirstHigh;
        const char16_t unit = is_ascii ? byte : page.upper_half[byte - kFirstHigh];
        const bool is_letter = page.case_of(unit) != LetterCase::None;
        if ((!is_ascii && !is_letter && !is_mark(unit)) || !words.take(unit)) {
            return std::nullopt;
        }
        reading.text += unit;
        reading.letters += is_letter ? 1 : 0;
        reading.usual_letters += page.usual_letters.find(unit) != std::u16string_view::npos ? 1 : 0;
    }
    constexpr std::size_t kFewLetters = 3;
    return reading.letters > kFewLetters ? std::optional(reading) : std::nullopt;
}

std::optional<String> read_in_page(const std::string& code_page, std::string_view bytes) {
    const auto* const page =
        std::find_if(kPages.begin(), kPages.end(),
                     [&](const CodePage& candidate) { return code_page == candidate.name; });
    const auto reading = page == kPages.end() ? std::nullopt : read_as(*page, bytes);
    if (!reading) {
        return std::nullopt;
    }
    const bool is_certain = std::none_of(kPages.begin(), kPages.end(), [&](const CodePage& other) {
        const auto other_reading = read_as(other, bytes);
        return other_reading && other_reading->text != reading->text &&
               reading->is_hardly_better_than(*other_reading);
    });
    return is_certain ? std::optional(reading->text) : std::nullopt;
}

// A byte that is not UTF-8 has a unit of its own, which is no half of a pair.
bool has_stray_byte(const String& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (is_between(text[i], 0xDC80, 0xDCFF) &&
            (i == 0 || !is_between(text[i - 1], 0xD800, 0xDBFF))) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<std::string> repairable_code_pages() {
    std::vector<std::string> names{kUtf8};
    std::transform(kPages.begin(), kPages.end(), std::back_inserter(names),
                   [](const CodePage& page) { return std::string(page.name); });
    return names;
}

std::optional<String> repaired_text(const String& text, const std::string& code_page) {
    const auto misread = find_misread_encoding(text);
    if (!misread) {
        return std::nullopt;
    }
    if (misread->encoding != MeantEncoding::Utf8) {
        return read_in_page(code_page, *single_bytes(text));
    }
    if (code_page != kUtf8 || has_stray_byte(misread->meant)) {
        return std::nullopt;
    }
    // Some texts were misread twice. Each time the text gets shorter.
    const auto again = find_misread_encoding(misread->meant);
    return again && again->encoding == MeantEncoding::Utf8
               ? repaired_text(misread->meant, code_page)
               : std::optional(misread->meant);
}

}  // namespace brindle::host
