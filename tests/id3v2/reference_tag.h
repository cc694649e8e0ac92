// Reading a tag as plain steps over the bytes of a file, one after the other: slow, and with no
// thought of how the real reader goes about it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <brindle/genres.h>

#include "support/bytes.h"

namespace brindle::test {

class ReferenceTag {
public:
    std::vector<std::string> FrameList;
    std::map<std::string, int> TagCounts;
    std::map<std::string, std::string> TagValues;  // by "TXXX:3"
    std::map<std::string, std::string> CustomFields;
    std::map<std::string, std::string> cached;  // by frame id
    int genre = 0;
    bool genre_name_of_table = false;  // then `genre_name_number` names it
    int genre_name_number = 0;
    int version = 0;
    long tag_size = 0;
    bool corrupt = false;

    // `position` counts from 1 and is that of the version byte.
    void walk(const Bytes& file, long position) {
        file_ = &file;
        position_ = position;
        version = byte();
        if (version < 2 || version > 4) {
            return;
        }
        byte();
        byte();
        tag_size = 0;
        for (int i = 0; i < 4; ++i) {
            tag_size = tag_size * 128 + byte();
        }
        if (version == 2) {
            walk2();
        } else {
            walk34();
        }
    }

private:
    int byte() {
        const long at = position_++;
        return at <= static_cast<long>(file_->size()) ? (*file_)[static_cast<std::size_t>(at - 1)]
                                                      : 0;
    }
    std::string bytes(long count) {
        std::string text;
        for (long i = 0; i < count; ++i) {
            text.push_back(static_cast<char>(byte()));
        }
        return text;
    }
    // Data ends where the file ends.
    std::string data(long size) {
        std::string text;
        while (size-- > 0 && position_ <= static_cast<long>(file_->size())) {
            text.push_back(static_cast<char>(byte()));
        }
        return text;
    }
    long number(long width) {
        long value = 0;
        for (long i = 0; i < width; ++i) {
            value = value * 256 + byte();
        }
        return value;
    }
    static std::string without_nuls(std::string text) {
        std::erase(text, '\0');
        return text;
    }

    static std::string mapped(const std::string& id) {
        static const std::map<std::string, std::string> kIds{
            {"TP1", "TPE1"}, {"TT2", "TIT2"}, {"TAL", "TALB"}, {"COM", "COMM"}, {"TRK", "TRCK"},
            {"TEN", "TENC"}, {"TYE", "TYER"}, {"TCO", "TCON"}, {"PIC", "APIC"}};
        const auto found = kIds.find(id);
        return found == kIds.end() ? std::string() : found->second;
    }

    void walk2() {
        long count = 0;
        for (;;) {
            const std::string id = bytes(3);
            const long size = number(3);
            count += 9;
            if (id == std::string(3, '\0') || count + size > tag_size) {
                return;
            }
            const std::string value = data(size);
            count += size;
            file(mapped(id), value);
            if (position_ > tag_size) {
                return;
            }
        }
    }

    void walk34() {
        for (;;) {
            const std::string id = bytes(4);
            const long size = number(4);
            bytes(2);
            if (id == std::string(4, '\0')) {
                return;
            }
            if (size > 16777216) {
                corrupt = true;
                return;
            }
            const bool skipped =
                size < 1 || (id == "APIC" && size > 81920) || (id != "APIC" && size > 5000);
            if (!skipped) {
                file34(id, data(size));
            }
            if (position_ > tag_size) {
                return;
            }
        }
    }

    void file34(const std::string& id, std::string value) {
        const std::size_t nul = value.find('\0');
        if (id == "TXXX") {
            if (nul != std::string::npos) {
                while (!value.empty() && value[0] == '\0') {
                    value.erase(0, 1);
                }
                file(id, value);
            }
        } else if (id == "APIC") {
            file(id, value);
        } else if (value.substr(0, 3) == "\x01\xFF\xFE") {
            file(id, without_nuls(value.substr(3)));
        } else {
            file(id, nul == std::string::npos ? value : value.substr(nul + 1));
        }
    }

    void file(const std::string& id, std::string value) {
        if (id != "TXXX" && id != "APIC") {
            value = without_nuls(value);
        }
        int n = 1;
        if (!TagCounts.contains(id)) {
            FrameList.push_back(id);
        } else {
            n = TagCounts[id] + 1;
        }
        TagCounts[id] = n;
        TagValues[id + ":" + std::to_string(n)] = value;
        if (id == "TXXX") {
            std::vector<std::string> pieces(1);
            for (const char character : value) {
                if (character == '\0') {
                    pieces.emplace_back();
                } else {
                    pieces.back().push_back(character);
                }
            }
            if (pieces.size() > 1) {
                CustomFields.emplace(pieces[0], pieces[1]);
            }
        } else if (id == "COMM") {
            std::string& comment = cached[id];
            comment = comment.empty() ? value : comment + '\0' + "\r\n" + value;
        } else if (id == "TCON") {
            content_type(value);
        } else {
            cached[id] = value;
        }
    }

    // Blanks, sign, digits with a point, exponent, blanks; a digit before the exponent.
    static bool is_number(const std::string& text) {
        const char* at = text.c_str();
        const auto digits = [&] {
            const char* const first = at;
            while (*at >= '0' && *at <= '9') {
                ++at;
            }
            return at - first;
        };
        const auto sign = [&] { at += *at == '+' || *at == '-' ? 1 : 0; };
        at += std::strspn(at, " ");
        sign();
        auto mantissa = digits();
        if (*at == '.') {
            ++at;
            mantissa += digits();
        }
        if (mantissa == 0) {
            return false;
        }
        if (*at == 'e' || *at == 'E') {
            ++at;
            sign();
            if (digits() == 0) {
                return false;
            }
        }
        at += std::strspn(at, " ");
        return *at == '\0' && at == text.c_str() + text.size();
    }

    // To the nearest whole number, halves to even. On the digits, as no type for fractions holds
    // all that a text can have. What has more than four digits before its point is too large
    // anyhow.
    static long rounded(const std::string& text) {
        constexpr long kFarOff = 1'000'000'000;
        constexpr long kTooLarge = 10'000;
        const std::size_t mantissa = std::min(text.find_first_of("eE"), text.size());
        long point = 0;  // number of digits before it
        if (mantissa < text.size()) {
            const long exponent = std::strtol(text.c_str() + mantissa + 1, nullptr, 10);
            point = std::clamp(exponent, -kFarOff, kFarOff);
        }
        std::string digits;
        bool in_whole_part = true;
        for (const char character : text.substr(0, mantissa)) {
            if (character == '.') {
                in_whole_part = false;
            } else if (character >= '0' && character <= '9') {
                digits += character;
                point += in_whole_part ? 1 : 0;
            }
        }
        const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
        digits.erase(0, zeros);
        digits.erase(digits.find_last_not_of('0') + 1);
        point -= static_cast<long>(zeros);
        if (digits.empty() || point < 0) {
            return 0;
        }
        if (point > 4) {
            return kTooLarge;
        }
        const auto whole = static_cast<std::size_t>(point);
        digits.resize(std::max(digits.size(), whole), '0');
        long number = std::strtol(digits.substr(0, whole).c_str(), nullptr, 10);
        const std::string rest = digits.substr(whole);
        if (rest > "5" || (rest == "5" && number % 2 != 0)) {
            ++number;
        }
        return text.find('-') < mantissa ? -number : number;
    }

    void content_type(const std::string& value) {
        cached["TCON"] = value;
        genre_name_of_table = false;
        const auto p = static_cast<long>(value.find('(')) + 1;
        const auto q = static_cast<long>(value.find(')')) + 1;
        if (p < 1 || q < 1 || q - p - 2 < 0) {
            return;
        }
        const std::string text =
            value.substr(static_cast<std::size_t>(p), static_cast<std::size_t>(q - p - 2));
        if (!is_number(text)) {
            return;
        }
        const long number = rounded(text);
        if (number < 0 || number > 255) {
            return;
        }
        genre = static_cast<int>(number);
        if (q + 1 >= static_cast<long>(value.size())) {
            genre_name_of_table = true;
            genre_name_number = genre;
        } else {
            cached["TCON"] = value.substr(static_cast<std::size_t>(q));
        }
    }

    const Bytes* file_ = nullptr;
    long position_ = 0;
};

}  // namespace brindle::test
