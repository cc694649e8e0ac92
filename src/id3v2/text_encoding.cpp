#include "id3v2/text_encoding.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <utility>

#include <brindle/text.h>

#include "util/code_page.h"

namespace brindle {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr char16_t kSwappedMark = 0xFFFE;
constexpr char16_t kReplacement = 0xFFFD;

constexpr bool is_high_surrogate(char16_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool is_low_surrogate(char16_t unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}

void append_unit(std::vector<std::uint8_t>& bytes, char16_t unit) {
    constexpr unsigned kByteBits = 8;
    bytes.push_back(static_cast<std::uint8_t>(unit));
    bytes.push_back(static_cast<std::uint8_t>(unit >> kByteBits));
}

// Each string of a frame begins with a mark of its own.
String from_utf16(Bytes bytes, bool big_endian) {
    String text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto high = static_cast<unsigned>(bytes[big_endian ? i : i + 1]);
        const auto low = static_cast<unsigned>(bytes[big_endian ? i + 1 : i]);
        const auto unit = static_cast<char16_t>(high << 8U | low);
        if (unit == kSwappedMark) {
            big_endian = !big_endian;
        } else if (unit != kByteOrderMark) {
            text.push_back(unit);
        }
    }
    return text;
}

// Takes units of any strings and writes them in little-endian order, each string with its mark.
class MarkedUtf16Writer {
public:
    void put(char16_t unit) {
        if (const char16_t high = std::exchange(high_surrogate_, 0); high != 0) {
            if (is_low_surrogate(unit)) {
                append_unit(bytes, high);
                append_unit(bytes, unit);
                return;
            }
            append_unit(bytes, kReplacement);
        }
        begin_string();
        if (is_high_surrogate(unit)) {
            high_surrogate_ = unit;
        } else {
            append_unit(bytes, is_low_surrogate(unit) ? kReplacement : unit);
        }
        is_in_string_ = unit != u'\0';
    }
    // At the end of the text. An empty text can be a string, too.
    void finish(bool has_some_string) {
        if (std::exchange(high_surrogate_, 0) != 0) {
            append_unit(bytes, kReplacement);
        }
        if (has_some_string && !has_string_) {
            begin_string();
        }
    }
    [[nodiscard]] bool is_in_string() const noexcept { return is_in_string_; }

    std::vector<std::uint8_t> bytes;

private:
    void begin_string() {
        if (!is_in_string_) {
            append_unit(bytes, kByteOrderMark);
        }
        is_in_string_ = true;
        has_string_ = true;
    }

    char16_t high_surrogate_ = 0;
    bool is_in_string_ = false;
    bool has_string_ = false;
};

// --- From the old encodings, a byte at a time.

class Utf8Reader {
public:
    void put(std::uint8_t byte, MarkedUtf16Writer& to) {
        if (missing_ != 0) {
            if (byte >= least_next_ && byte <= last_next_) {
                code_point_ = code_point_ << kContinuationBits | (byte & kContinuationPayload);
                least_next_ = kFirstContinuation;
                last_next_ = kLastContinuation;
                if (--missing_ == 0) {
                    put_code_point(to);
                }
                return;
            }
            missing_ = 0;
            to.put(kReplacement);
        }
        begin(byte, to);
    }
    void finish(MarkedUtf16Writer& to) {
        if (std::exchange(missing_, 0) != 0) {
            to.put(kReplacement);
        }
    }

private:
    static constexpr unsigned kContinuationBits = 6;
    static constexpr std::uint8_t kContinuationPayload = 0x3F;
    static constexpr std::uint8_t kFirstContinuation = 0x80;
    static constexpr std::uint8_t kLastContinuation = 0xBF;

    // The well-formed sequences by their first byte, see "The Unicode Standard", table 3-7.
    struct Lead {
        std::uint8_t first;
        std::uint8_t last;
        int following;
        std::uint8_t payload;
        std::uint8_t least_next;
        std::uint8_t last_next;
    };
    static constexpr Lead kLeads[] = {
        {0xC2, 0xDF, 1, 0x1F, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0x0F, 0xA0, 0xBF},
        {0xE1, 0xEC, 2, 0x0F, 0x80, 0xBF}, {0xED, 0xED, 2, 0x0F, 0x80, 0x9F},
        {0xEE, 0xEF, 2, 0x0F, 0x80, 0xBF}, {0xF0, 0xF0, 3, 0x07, 0x90, 0xBF},
        {0xF1, 0xF3, 3, 0x07, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x07, 0x80, 0x8F},
    };

    void begin(std::uint8_t byte, MarkedUtf16Writer& to) {
        constexpr std::uint8_t kLastAscii = 0x7F;
        if (byte <= kLastAscii) {
            to.put(byte);
            return;
        }
        const auto* const lead =
            std::find_if(std::begin(kLeads), std::end(kLeads),
                         [byte](const Lead& row) { return byte >= row.first && byte <= row.last; });
        if (lead == std::end(kLeads)) {
            to.put(kReplacement);
            return;
        }
        code_point_ = byte & lead->payload;
        missing_ = lead->following;
        least_next_ = lead->least_next;
        last_next_ = lead->last_next;
    }

    void put_code_point(MarkedUtf16Writer& to) const {
        constexpr char32_t kFirstSupplementary = 0x10000;
        constexpr unsigned kHalfBits = 10;
        constexpr char32_t kHalf = 0x3FF;
        if (code_point_ < kFirstSupplementary) {
            if (code_point_ != kByteOrderMark || to.is_in_string()) {
                to.put(static_cast<char16_t>(code_point_));
            }
            return;
        }
        const char32_t rest = code_point_ - kFirstSupplementary;
        to.put(static_cast<char16_t>(0xD800 + (rest >> kHalfBits)));
        to.put(static_cast<char16_t>(0xDC00 + (rest & kHalf)));
    }

    char32_t code_point_ = 0;
    int missing_ = 0;
    std::uint8_t least_next_ = 0;
    std::uint8_t last_next_ = 0;
};

class Utf16Reader {
public:
    void put(std::uint8_t byte, MarkedUtf16Writer& to) {
        if (!std::exchange(has_first_, !has_first_)) {
            first_ = byte;
            return;
        }
        constexpr unsigned kByteBits = 8;
        auto unit = static_cast<char16_t>(big_endian_ ? first_ << kByteBits | byte
                                                      : byte << kByteBits | first_);
        // A mark that should not be there turns the rest of its string.
        if (!to.is_in_string() && (unit == kByteOrderMark || unit == kSwappedMark)) {
            big_endian_ = (unit == kByteOrderMark) == big_endian_;
            return;
        }
        to.put(unit);
        big_endian_ = big_endian_ || unit == u'\0';
    }
    // Half a unit is nothing.
    void finish(MarkedUtf16Writer& /*to*/) {}

private:
    std::uint8_t first_ = 0;
    bool has_first_ = false;
    bool big_endian_ = true;
};

// One text, byte by byte: its strings, and the separators between them.
template <typename Reader>
class Transcoder {
public:
    explicit Transcoder(std::size_t stamp_size) : stamp_size_(stamp_size) {}

    void put(std::uint8_t byte) {
        if (stamp_left_ > 0) {
            writer_.bytes.push_back(byte);
            --stamp_left_;
            return;
        }
        const std::size_t written = writer_.bytes.size();
        reader_.put(byte, writer_);
        if (writer_.bytes.size() > written && !writer_.is_in_string()) {
            stamp_left_ = stamp_size_;
        }
    }
    void finish() {
        reader_.finish(writer_);
        writer_.finish(stamp_size_ == 0);
    }
    // What has been written and not yet taken.
    [[nodiscard]] std::vector<std::uint8_t>& bytes() noexcept { return writer_.bytes; }

private:
    std::size_t stamp_size_;
    std::size_t stamp_left_ = 0;
    Reader reader_;
    MarkedUtf16Writer writer_;
};

template <typename Reader>
class MarkedUtf16Stream : public ByteStream {
public:
    MarkedUtf16Stream(std::unique_ptr<ByteStream> bytes, std::size_t stamp_size)
        : bytes_(std::move(bytes)), text_(stamp_size) {}

    std::size_t read(std::span<std::uint8_t> into) override {
        std::size_t done = 0;
        while (done < into.size()) {
            const std::vector<std::uint8_t>& made = text_.bytes();
            if (taken_ == made.size() && !make_more()) {
                break;
            }
            const std::size_t count = std::min(into.size() - done, made.size() - taken_);
            std::copy_n(made.begin() + static_cast<std::ptrdiff_t>(taken_), count,
                        into.begin() + static_cast<std::ptrdiff_t>(done));
            done += count;
            taken_ += count;
        }
        return done;
    }

private:
    // False when there is nothing more.
    bool make_more() {
        constexpr std::size_t kBlock = 4'096;
        std::array<std::uint8_t, kBlock> block{};
        text_.bytes().clear();
        taken_ = 0;
        while (text_.bytes().empty() && !has_ended_) {
            const std::size_t read = bytes_->read(block);
            std::for_each_n(block.begin(), read, [&](std::uint8_t byte) { text_.put(byte); });
            if (read < block.size()) {
                text_.finish();
                has_ended_ = true;
            }
        }
        return !text_.bytes().empty();
    }

    std::unique_ptr<ByteStream> bytes_;
    Transcoder<Reader> text_;
    std::size_t taken_ = 0;
    bool has_ended_ = false;
};

template <typename Reader>
std::vector<std::uint8_t> marked_utf16_of(Bytes bytes, std::size_t stamp_size) {
    Transcoder<Reader> text(stamp_size);
    for (const std::uint8_t byte : bytes) {
        text.put(byte);
    }
    text.finish();
    return std::move(text.bytes());
}

}  // namespace

std::size_t string_length(TextEncoding encoding, Bytes bytes) noexcept {
    if (terminator_size(encoding) == 1) {
        return static_cast<std::size_t>(
            std::distance(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)));
    }
    std::size_t length = 0;
    while (length + 1 < bytes.size() && (bytes[length] != 0 || bytes[length + 1] != 0)) {
        length += 2;
    }
    return length + 1 < bytes.size() ? length : bytes.size();
}

String decoded(TextEncoding encoding, Bytes bytes) {
    switch (encoding) {
        case TextEncoding::Utf16:
            return from_utf16(bytes, false);
        case TextEncoding::Utf16BigEndian:
            return from_utf16(bytes, true);
        case TextEncoding::Utf8:
            return from_utf8(std::string(bytes.begin(), bytes.end()));
        case TextEncoding::Latin1:
            break;
    }
    return widen(bytes);
}

std::vector<std::uint8_t> to_marked_utf16(TextEncoding encoding, Bytes bytes,
                                          std::size_t stamp_size) {
    return encoding == TextEncoding::Utf8 ? marked_utf16_of<Utf8Reader>(bytes, stamp_size)
                                          : marked_utf16_of<Utf16Reader>(bytes, stamp_size);
}

std::unique_ptr<ByteStream> to_marked_utf16(TextEncoding encoding,
                                            std::unique_ptr<ByteStream> bytes,
                                            std::size_t stamp_size) {
    if (encoding == TextEncoding::Utf8) {
        return std::make_unique<MarkedUtf16Stream<Utf8Reader>>(std::move(bytes), stamp_size);
    }
    return std::make_unique<MarkedUtf16Stream<Utf16Reader>>(std::move(bytes), stamp_size);
}

std::vector<std::uint8_t> marked_utf16(const String& text) {
    MarkedUtf16Writer writer;
    for (const char16_t unit : text) {
        writer.put(unit);
    }
    writer.finish(true);
    return std::move(writer.bytes);
}

}  // namespace brindle
