#include "commands/misread_code_page.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string_view>

#include <brindle/text.h>

namespace brindle::host {

namespace {

using namespace std::string_view_literals;
using Byte = std::uint8_t;

// 80 to 9F of Windows-1252; 0 is not assigned.
constexpr std::u16string_view kWindows1252 =
    u"\u20AC\0\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\0\u017D\0"
    u"\0\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\0\u017E\u0178"sv;

constexpr Byte kFirstHigh = 0x80;
constexpr Byte kFirstLetter = 0xC0;

bool is_upper(Byte byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= kFirstLetter && byte < 0xDF && byte != 0xD7);
}

bool is_ascii_letter(Byte byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

bool is_letter(Byte byte) {
    return is_ascii_letter(byte) || byte >= kFirstLetter;
}

// Quotation marks, dashes, dots, spaces: the characters next to words in Latin text.
bool is_typographic(Byte byte) {
    constexpr std::string_view kMarks =
        "\x82\x84\x85\x8B\x91\x92\x93\x94\x95\x96\x97\x99\x9B\xA0\xA1\xA9\xAB\xAE\xB0\xB7\xBB\xBF";
    return kMarks.find(static_cast<char>(byte)) != std::string_view::npos;
}

// --- UTF-8

// Letters and marks of living scripts. Other characters that a pair of Latin letters makes in UTF-8
// are coincidence.
bool is_in_use(char32_t point) {
    struct Range {
        char32_t first;
        char32_t last;
    };
    constexpr std::array kRanges{
        Range{0x00A0, 0x017F},  // Latin
        Range{0x018F, 0x01B0},   Range{0x01CD, 0x01DC}, Range{0x0218, 0x021B},
        Range{0x0259, 0x0259},   Range{0x02BB, 0x02BC}, Range{0x02C6, 0x02DC},
        Range{0x0300, 0x0331},   Range{0x0384, 0x03CE},  // Greek
        Range{0x0400, 0x045F},                           // Cyrillic
        Range{0x0490, 0x0493},   Range{0x0531, 0x0587}, Range{0x05D0, 0x05EA},
        Range{0x060C, 0x064A},  // Arabic
        Range{0x066A, 0x06D2},   Range{0x0901, 0x0D7F}, Range{0x0E01, 0x0E5B},
        Range{0x10A0, 0x10FF},   Range{0x1E00, 0x1FFE}, Range{0x2010, 0x203A},
        Range{0x20A0, 0x20BF},   Range{0x2100, 0x21FF}, Range{0x2200, 0x27BF},
        Range{0x3001, 0x30FF},  // Japanese
        Range{0x4E00, 0x9FFF},   Range{0xAC00, 0xD7A3}, Range{0xFF01, 0xFF9F},
        Range{0x1F300, 0x1FAFF},
    };
    return std::any_of(kRanges.begin(), kRanges.end(), [&](const Range& range) {
        return point >= range.first && point <= range.last;
    });
}

struct Sequence {
    char32_t point;
    std::size_t length;
};

// The character of several bytes at the front.
std::optional<Sequence> sequence_at(std::string_view bytes) {
    struct Lead {
        Byte first;
        Byte last;
        std::size_t length;
        Byte bits;
    };
    constexpr std::array kLeads{Lead{0xC2, 0xDF, 2, 0x1F}, Lead{0xE0, 0xEF, 3, 0x0F},
                                Lead{0xF0, 0xF4, 4, 0x07}};
    constexpr unsigned kContinuationBits = 6;
    constexpr Byte kContinuation = 0x80;
    constexpr Byte kContinuationMask = 0xC0;
    const Byte first = static_cast<Byte>(bytes.front());
    const auto* const lead = std::find_if(kLeads.begin(), kLeads.end(), [&](const Lead& candidate) {
        return first >= candidate.first && first <= candidate.last;
    });
    if (lead == kLeads.end() || bytes.size() < lead->length) {
        return std::nullopt;
    }
    char32_t point = first & lead->bits;
    for (std::size_t i = 1; i < lead->length; ++i) {
        const Byte next = static_cast<Byte>(bytes[i]);
        if ((next & kContinuationMask) != kContinuation) {
            return std::nullopt;
        }
        point = point << kContinuationBits | (next & ~kContinuationMask & 0xFFU);
    }
    return Sequence{point, lead->length};
}

// Latin text in which a letter and the marks next to it happen to be UTF-8: "PÅ»", "é »".
bool may_be_chance(std::string_view bytes, std::size_t place, std::size_t length) {
    constexpr Byte kApostrophe = 0x92;
    constexpr Byte kTildeA = 0xC3;  // not a word, but the first byte of most letters in UTF-8
    const auto byte_at = [&](std::size_t i) {
        return i < bytes.size() ? static_cast<Byte>(bytes[i]) : Byte{' '};
    };
    const std::size_t end = place + length;
    for (std::size_t i = place + 1; i < end; ++i) {
        if (!is_typographic(byte_at(i))) {
            return false;
        }
    }
    const bool has_s = (byte_at(end) == 'S' || byte_at(end) == 's') && !is_letter(byte_at(end + 1));
    if (is_letter(byte_at(end)) && !(byte_at(end - 1) == kApostrophe && has_s)) {
        return false;
    }
    const bool begins_word = place == 0 || byte_at(place - 1) == ' ';
    const bool follows_capital_or_mark =
        place > 0 && (is_upper(byte_at(place - 1)) || is_typographic(byte_at(place - 1)));
    return !is_upper(byte_at(place)) || follows_capital_or_mark ||
           (begins_word && byte_at(place) != kTildeA);
}

bool is_utf8(std::string_view bytes) {
    constexpr int kManyChances = 3;
    constexpr std::size_t kLongest = 4;
    int evidence = 0;
    int chances = 0;
    for (std::size_t i = 0; i < bytes.size();) {
        if (static_cast<Byte>(bytes[i]) < kFirstHigh) {
            ++i;
            continue;
        }
        const auto sequence = sequence_at(bytes.substr(i));
        if (!sequence) {
            // The last one may have been cut with the text.
            const bool is_cut = bytes.size() - i < kLongest && evidence > 0 &&
                                static_cast<Byte>(bytes[i]) >= kFirstLetter;
            return is_cut;
        }
        if (!is_in_use(sequence->point)) {
            return false;
        }
        ++(may_be_chance(bytes, i, sequence->length) ? chances : evidence);
        i += sequence->length;
    }
    return evidence > 0 || chances >= kManyChances;
}

// --- code pages whose letters are where Latin has letters with accents

// Marks of Latin text, letters of these code pages.
bool is_letter_elsewhere(Byte byte) {
    constexpr std::string_view kLetters =
        "\xA2\xA3\xA5\xA8\xAA\xAF\xB2\xB3\xB4\xB8\xB9\xBA\xBC\xBE\xBF";
    return kLetters.find(static_cast<char>(byte)) != std::string_view::npos;
}

// The words of a text that consist of letters with accents only.
class AccentedWords {
public:
    explicit AccentedWords(std::string_view bytes) {
        for (const char c : bytes) {
            const auto byte = static_cast<Byte>(c);
            if (is_letter(byte)) {
                ++letters_;
                word_has_ascii_ = word_has_ascii_ || is_ascii_letter(byte);
                word_ += c;
            } else if (is_letter_elsewhere(byte)) {
                word_ += c;
            } else {
                end_word();
            }
        }
        end_word();
    }

    [[nodiscard]] bool are_of_another_script() const {
        constexpr std::size_t kFewLetters = 3;
        constexpr std::size_t kMaxOfTen = 6;
        const bool is_most_of_text = accented_letters_ * 10 >= letters_ * kMaxOfTen;
        return has_long_word_ ||
               (is_most_of_text && distinct_.size() >= kFewLetters && longest_word_ >= 2 &&
                accented_letters_ > kFewLetters) ||
               (is_most_of_text && longest_word_ == kFewLetters && distinct_.size() >= kFewLetters);
    }

private:
    void end_word() {
        constexpr std::size_t kLong = 4;
        constexpr std::size_t kDistinct = 2;
        constexpr Byte kLowerCase = 0x20;
        // "ÄÖÜ", "Öö": separate letters in languages that have few others with accents.
        constexpr std::string_view kOrdinary = "\xE4\xF6\xFC\xDF\xE5\xE6\xF8\xE9\xFF";
        // Latin text has such marks next to one letter: "¿Ó".
        const auto letters = std::count_if(word_.begin(), word_.end(), [](char c) {
            return static_cast<Byte>(c) >= kFirstLetter;
        });
        if (letters > (word_.size() == 1 ? 0 : 1) && !word_has_ascii_) {
            std::set<Byte> distinct;
            bool is_ordinary = true;
            for (const char c : word_) {
                const auto lower = static_cast<Byte>(static_cast<Byte>(c) | kLowerCase);
                distinct.insert(lower);
                is_ordinary = is_ordinary &&
                              kOrdinary.find(static_cast<char>(lower)) != std::string_view::npos;
            }
            if (!is_ordinary) {
                accented_letters_ += word_.size();
                longest_word_ = std::max(longest_word_, word_.size());
                has_long_word_ =
                    has_long_word_ || (word_.size() >= kLong && distinct.size() >= kDistinct);
                distinct_.merge(distinct);
            }
        }
        word_.clear();
        word_has_ascii_ = false;
    }

    std::string word_;
    bool word_has_ascii_ = false;
    std::size_t letters_ = 0;
    std::size_t accented_letters_ = 0;  // in words without others
    std::size_t longest_word_ = 0;
    bool has_long_word_ = false;
    std::set<Byte> distinct_;
};

}  // namespace

std::optional<std::string> single_bytes(const String& text) {
    constexpr char16_t kBytes = 0x100;
    std::string bytes;
    for (const char16_t unit : text) {
        if (unit < kBytes) {
            bytes += static_cast<char>(unit);
            continue;
        }
        const std::size_t place = kWindows1252.find(unit);
        if (place == std::u16string_view::npos) {
            return std::nullopt;
        }
        bytes += static_cast<char>(kFirstHigh + place);
    }
    return bytes;
}

std::optional<MisreadText> find_misread_encoding(const String& text) {
    if (std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < kFirstHigh; })) {
        return std::nullopt;
    }
    const std::optional<std::string> bytes = single_bytes(text);
    if (!bytes) {
        return std::nullopt;
    }
    if (is_utf8(*bytes)) {
        return MisreadText{MeantEncoding::Utf8, from_utf8(*bytes)};
    }
    if (AccentedWords(*bytes).are_of_another_script()) {
        return MisreadText{MeantEncoding::CyrillicOrGreek, {}};
    }
    return std::nullopt;
}

}  // namespace brindle::host
