#include "id3v2/imported_frame.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "id3v2/documented_ids.h"
#include "id3v2/frame_fields.h"
#include "id3v2/tag_layout.h"
#include "id3v2/text_encoding.h"
#include "mpeg/frame_header.h"
#include "util/byte_source.h"

namespace brindle {

namespace {

using ByteVector = std::vector<std::uint8_t>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLengthWidth = 4;

// --- Bytes of a content, one after the other

class ContentStream final : public ByteStream {
public:
    explicit ContentStream(FileContent content) : content_(std::move(content)), file_(content_) {}

    std::size_t read(std::span<std::uint8_t> into) override {
        const std::size_t count = file_.read_at(position_, into);
        position_ += static_cast<std::int64_t>(count);
        return count;
    }

private:
    FileContent content_;
    ContentFile file_;
    std::int64_t position_ = 0;
};

// Leaves out the 0 that was put after each FF.
class SynchronisedStream final : public ByteStream {
public:
    explicit SynchronisedStream(std::unique_ptr<ByteStream> bytes) : bytes_(std::move(bytes)) {}

    std::size_t read(std::span<std::uint8_t> into) override {
        std::size_t kept = 0;
        while (kept < into.size()) {
            const auto rest = into.subspan(kept);
            const std::size_t count = bytes_->read(rest);
            kept += take_zeros_out(rest.first(count));
            if (count < rest.size()) {
                break;
            }
        }
        return kept;
    }

private:
    std::size_t take_zeros_out(std::span<std::uint8_t> bytes) {
        const auto end = std::remove_if(bytes.begin(), bytes.end(), [&](std::uint8_t byte) {
            return std::exchange(was_sync_, byte == kSyncByte) && byte == 0;
        });
        return static_cast<std::size_t>(std::distance(bytes.begin(), end));
    }

    std::unique_ptr<ByteStream> bytes_;
    bool was_sync_ = false;
};

class SynchronisedBytes final : public ByteSource {
public:
    explicit SynchronisedBytes(FileContent content) : content_(std::move(content)) {}
    [[nodiscard]] std::unique_ptr<ByteStream> open() const override {
        return std::make_unique<SynchronisedStream>(std::make_unique<ContentStream>(content_));
    }

private:
    FileContent content_;
};

class MarkedText final : public ByteSource {
public:
    MarkedText(TextEncoding encoding, FileContent content, std::size_t stamp_size)
        : encoding_(encoding), content_(std::move(content)), stamp_size_(stamp_size) {}
    [[nodiscard]] std::unique_ptr<ByteStream> open() const override {
        return to_marked_utf16(encoding_, std::make_unique<ContentStream>(content_), stamp_size_);
    }

private:
    TextEncoding encoding_;
    FileContent content_;
    std::size_t stamp_size_;
};

// In memory where it is small.
void append_made(FileContent& to, std::shared_ptr<const ByteSource> source,
                 std::int64_t largest_size) {
    if (std::cmp_less_equal(largest_size, kMaxBodyInMemory)) {
        ByteVector bytes(static_cast<std::size_t>(largest_size));
        bytes.resize(source->open()->read(bytes));
        to.append_owned(std::move(bytes));
    } else {
        const std::int64_t size = count_bytes(*source);
        to.append(std::move(source), size);
    }
}

FileContent part_of(const FileContent& content, std::int64_t begin, std::int64_t end) {
    FileContent part;
    part.append(content, {begin, std::max(begin, end)});
    return part;
}

FileContent from(const FileContent& content, std::int64_t begin) {
    return part_of(content, begin, content.size());
}

ByteVector head_of(const FileContent& content, std::size_t count) {
    ByteVector bytes(static_cast<std::size_t>(
        std::min<std::uint64_t>(count, static_cast<std::uint64_t>(content.size()))));
    ContentFile file(content);
    bytes.resize(file.read_at(0, bytes));
    return bytes;
}

FileContent synchronised(FileContent content) {
    FileContent made;
    const std::int64_t largest = content.size();
    append_made(made, std::make_shared<SynchronisedBytes>(std::move(content)), largest);
    return made;
}

// --- Texts

// The content of a frame whose encoding version 2.3 does not know.
class TextConversion {
public:
    explicit TextConversion(const FileContent& content)
        : content_(content),
          head_(head_of(content, kMaxBodyInMemory)),
          encoding_(static_cast<TextEncoding>(head_.front())) {}

    [[nodiscard]] FileContent convert(std::span<const FrameField> fields) {
        for (const FrameField field : fields) {
            take(field);
        }
        result_.append_owned(std::move(made_));
        result_.append(rest_);
        return std::move(result_);
    }

private:
    [[nodiscard]] Bytes ahead() const { return Bytes(head_).subspan(position_); }

    void copy(std::size_t count) {
        const Bytes bytes = ahead().first(std::min(count, ahead().size()));
        made_.insert(made_.end(), bytes.begin(), bytes.end());
        position_ += bytes.size();
    }

    void take(FrameField field) {
        constexpr std::size_t kStamp = 4;
        switch (field) {
            case FrameField::Encoding:
                made_.push_back(static_cast<std::uint8_t>(TextEncoding::Utf16));
                ++position_;
                return;
            case FrameField::Language:
            case FrameField::OneByte:
            case FrameField::TwoBytes:
            case FrameField::Date:
                return copy(width_of(field));
            case FrameField::Latin1String:
                return copy(string_length(TextEncoding::Latin1, ahead()) + 1);
            case FrameField::EncodedString:
                return take_string();
            case FrameField::Text:
                return take_text(0);
            case FrameField::SyncedText:
                return take_text(kStamp);
            case FrameField::Data:
                rest_ = from(content_, static_cast<std::int64_t>(position_));
                return;
        }
    }

    // With its terminator, where it has one.
    void take_string() {
        const std::size_t length = std::min(
            string_length(encoding_, ahead()) + terminator_size(encoding_), ahead().size());
        if (length > 0) {
            const ByteVector text = to_marked_utf16(encoding_, ahead().first(length));
            made_.insert(made_.end(), text.begin(), text.end());
            position_ += length;
        }
    }

    void take_text(std::size_t stamp_size) {
        constexpr std::int64_t kMaxGrowth = 2;  // UTF-8 of one byte a character
        constexpr std::int64_t kMark = 2;
        FileContent text = from(content_, static_cast<std::int64_t>(position_));
        // In the worst case each byte is a string of its own, with a mark and a terminator.
        const std::int64_t largest = text.size() * (kMaxGrowth + kMark) + kMark;
        append_made(rest_, std::make_shared<MarkedText>(encoding_, std::move(text), stamp_size),
                    largest);
    }

    const FileContent& content_;
    ByteVector head_;
    TextEncoding encoding_;
    std::size_t position_ = 0;
    ByteVector made_;
    FileContent rest_;
    FileContent result_;
};

// --- Frames

struct Flags {
    std::array<std::uint8_t, 2> flags{};
    ByteVector prefix;
};

// Group, method and length, in the order of version 2.4.
struct Version4Prefix {
    ByteVector group;
    ByteVector method;
    ByteVector length;
    std::size_t size = 0;
};

Version4Prefix split_prefix(std::uint8_t format, Bytes content) {
    Version4Prefix prefix;
    const auto take = [&](std::uint8_t flag, std::size_t width) -> ByteVector {
        if ((format & flag) == 0) {
            return {};
        }
        const Bytes bytes =
            content.subspan(prefix.size, std::min(width, content.size() - prefix.size));
        prefix.size += bytes.size();
        return {bytes.begin(), bytes.end()};
    };
    prefix.group = take(version4_flags::kGrouped, 1);
    prefix.method = take(version4_flags::kEncrypted, 1);
    prefix.length = take(version4_flags::kHasLength, kLengthWidth);
    return prefix;
}

// Of what version 2.3 expects. None where the length without compression is not known.
std::optional<Flags> version3_flags(const std::array<std::uint8_t, 2>& of_version4,
                                    const Version4Prefix& prefix) {
    const std::uint8_t format = of_version4[1];
    Flags result;
    result.flags[0] = static_cast<std::uint8_t>(of_version4[0] << 1U);
    const auto add = [&](std::uint8_t flag, const ByteVector& bytes) {
        result.flags[1] = static_cast<std::uint8_t>(result.flags[1] | flag);
        result.prefix.insert(result.prefix.end(), bytes.begin(), bytes.end());
    };
    if ((format & version4_flags::kCompressed) != 0) {
        if (prefix.length.size() < kLengthWidth) {
            return std::nullopt;
        }
        ByteVector length(kLengthWidth);
        encode_number(decode_number(prefix.length, kSyncsafeShift), kPlainShift, length);
        add(version3_flags::kCompressed, length);
    }
    if ((format & version4_flags::kEncrypted) != 0) {
        add(version3_flags::kEncrypted, prefix.method);
    }
    if ((format & version4_flags::kGrouped) != 0) {
        add(version3_flags::kGrouped, prefix.group);
    }
    return result;
}

bool needs_other_encoding(std::string_view id, Bytes head) {
    return !fields_of(id).empty() && !head.empty() && head.front() <= kLastEncoding &&
           !is_of_version3(static_cast<TextEncoding>(head.front()));
}

FileContent converted_content(std::string_view id, const FileContent& content, int depth);

// Frames inside of chapters follow fields of the chapter's frame.
bool holds_frames(std::string_view id) noexcept {
    return id == "CHAP" || id == "CTOC";
}

// Where the first frame inside begins. "ID3v2 Chapter Frame Addendum", sections 3.1 and 3.2.
std::size_t inner_frames_begin(std::string_view id, Bytes head) {
    const auto string_at = [&](std::size_t begin) {
        const Bytes rest = head.subspan(std::min(begin, head.size()));
        return begin + string_length(TextEncoding::Latin1, rest) + 1;
    };
    constexpr std::size_t kTimesAndOffsets = 16;  // four numbers of four bytes
    std::size_t position = string_at(0);
    if (id == "CHAP") {
        return position + kTimesAndOffsets;
    }
    const std::size_t count_at = position + 1;
    position = count_at + 1;
    for (int left = count_at < head.size() ? head[count_at] : 0; left > 0; --left) {
        position = string_at(position);
    }
    return position;
}

struct InnerFrame {
    ByteVector header;
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

// None where the frames do not fill the content.
std::optional<std::vector<InnerFrame>> inner_frames(const FileContent& content, std::int64_t begin,
                                                    int size_shift) {
    std::vector<InnerFrame> frames;
    ContentFile file(content);
    std::int64_t position = begin;
    while (position < content.size()) {
        InnerFrame frame;
        frame.header.resize(kFrameLayout.header_size);
        if (file.read_at(position, frame.header) < frame.header.size()) {
            return std::nullopt;
        }
        const Bytes size =
            Bytes(frame.header).subspan(kFrameLayout.id_width, kFrameLayout.size_width);
        frame.begin = position + static_cast<std::int64_t>(kFrameLayout.header_size);
        frame.end = frame.begin + static_cast<std::int64_t>(decode_number(size, size_shift));
        if (frame.end > content.size()) {
            return std::nullopt;
        }
        position = frame.end;
        frames.push_back(std::move(frame));
    }
    return frames;
}

struct ConvertedFrame {
    std::array<std::uint8_t, 2> flags{};
    FileContent body;
    std::int64_t prefix = 0;
};

// Of version 2.4. `content` is the body as it stands.
std::optional<ConvertedFrame> convert_version4(std::string_view id,
                                               const std::array<std::uint8_t, 2>& flags,
                                               FileContent content, bool is_unsynchronised,
                                               int depth) {
    if (is_unsynchronised) {
        content = synchronised(std::move(content));
    }
    constexpr std::size_t kMaxPrefix = 2 + kLengthWidth;
    const Version4Prefix prefix = split_prefix(flags[1], head_of(content, kMaxPrefix));
    std::optional<Flags> version3 = version3_flags(flags, prefix);
    if (!version3) {
        return std::nullopt;
    }
    content = from(content, static_cast<std::int64_t>(prefix.size));
    const bool is_packed =
        (flags[1] & (version4_flags::kCompressed | version4_flags::kEncrypted)) != 0;
    ConvertedFrame frame;
    frame.flags = version3->flags;
    frame.prefix = static_cast<std::int64_t>(version3->prefix.size());
    frame.body.append_owned(std::move(version3->prefix));
    frame.body.append(is_packed ? content : converted_content(id, content, depth));
    return frame;
}

FileContent with_converted_frames(std::string_view id, const FileContent& content, int depth) {
    const ByteVector head = head_of(content, kMaxBodyInMemory);
    const std::size_t begin = inner_frames_begin(id, head);
    if (begin >= head.size()) {
        return content;
    }
    const auto first = static_cast<std::int64_t>(begin);
    auto frames = inner_frames(content, first, kSyncsafeShift);
    if (!frames) {
        frames = inner_frames(content, first, kPlainShift);
    }
    if (!frames) {
        return content;
    }
    FileContent result = part_of(content, 0, first);
    for (InnerFrame& inner : *frames) {
        const std::string inner_id(
            inner.header.begin(),
            inner.header.begin() + static_cast<std::ptrdiff_t>(kFrameLayout.id_width));
        std::array<std::uint8_t, 2> flags{};
        std::copy(inner.header.end() - 2, inner.header.end(), flags.begin());
        const auto converted =
            convert_version4(inner_id, flags, part_of(content, inner.begin, inner.end),
                             (flags[1] & version4_flags::kUnsynchronised) != 0, depth + 1);
        if (!converted) {
            return content;
        }
        encode_number(
            static_cast<std::uint64_t>(converted->body.size()), kPlainShift,
            std::span(inner.header).subspan(kFrameLayout.id_width, kFrameLayout.size_width));
        std::copy(converted->flags.begin(), converted->flags.end(), inner.header.end() - 2);
        result.append_owned(std::move(inner.header));
        result.append(converted->body);
    }
    return result;
}

FileContent converted_content(std::string_view id, const FileContent& content, int depth) {
    constexpr int kMaxDepth = 4;
    if (holds_frames(id)) {
        return depth < kMaxDepth ? with_converted_frames(id, content, depth) : content;
    }
    return needs_other_encoding(id, head_of(content, 1))
               ? TextConversion(content).convert(fields_of(id))
               : content;
}

// --- Version 2.2

// The format of a picture, three letters, becomes a MIME type.
ByteVector mime_type_of(Bytes format) {
    constexpr std::string_view kLink = "-->";
    const std::string name(format.begin(), format.end());
    std::string type = name == kLink ? name : "image/";
    if (name == "JPG") {
        type += "jpeg";
    } else if (name != kLink) {
        std::transform(name.begin(), name.end(), std::back_inserter(type), [](char letter) {
            return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
        });
    }
    return {type.begin(), type.end()};
}

FileContent picture_of_version2(const FileContent& content) {
    constexpr std::size_t kFormat = 3;
    const ByteVector head = head_of(content, 1 + kFormat);
    if (head.size() < 1 + kFormat) {
        return content;
    }
    ByteVector begin{head.front()};
    const ByteVector type = mime_type_of(Bytes(head).subspan(1));
    begin.insert(begin.end(), type.begin(), type.end());
    begin.push_back(0);
    FileContent result;
    result.append_owned(std::move(begin));
    result.append(from(content, static_cast<std::int64_t>(head.size())));
    return result;
}

// The frame that a link stands for is named by its id, too.
FileContent link_of_version2(const FileContent& content) {
    const ByteVector head = head_of(content, kVersion2FrameLayout.id_width);
    const std::string_view id =
        successor_of_version2_id({reinterpret_cast<const char*>(head.data()), head.size()});
    if (id.empty()) {
        return content;
    }
    FileContent result;
    result.append_owned({id.begin(), id.end()});
    result.append(from(content, static_cast<std::int64_t>(head.size())));
    return result;
}

FileContent content_of_version2(std::string_view id, const FileContent& content) {
    if (id == "PIC") {
        return picture_of_version2(content);
    }
    return id == "LNK" ? link_of_version2(content) : content;
}

std::optional<ImportedFrame> import_version2(const PublicFrame& frame, FileContent content) {
    const std::string_view id = successor_of_version2_id(frame.id());
    if (id.empty()) {
        return std::nullopt;
    }
    if (frame.is_unsynchronised) {
        content = synchronised(std::move(content));
    }
    ImportedFrame result;
    std::copy(id.begin(), id.end(), result.id_bytes.begin());
    result.body = converted_content(id, content_of_version2(frame.id(), content), 0);
    result.is_converted = true;
    return result;
}

ImportedFrame import_version3(const PublicFrame& frame, FileContent content) {
    ImportedFrame result;
    result.id_bytes = frame.id_bytes;
    result.flags = frame.flags;
    result.prefix = frame.prefix;
    result.is_packed = frame.is_packed;
    result.is_converted = false;
    result.body = frame.is_unsynchronised ? synchronised(std::move(content)) : std::move(content);
    return result;
}

std::optional<ImportedFrame> import_version4(const PublicFrame& frame, FileContent content) {
    std::optional<ConvertedFrame> converted =
        convert_version4(frame.id(), frame.flags, std::move(content), frame.is_unsynchronised, 0);
    if (!converted) {
        return std::nullopt;
    }
    ImportedFrame result;
    result.id_bytes = frame.id_bytes;
    result.flags = converted->flags;
    result.body = std::move(converted->body);
    result.prefix = converted->prefix;
    result.is_packed = frame.is_packed;
    result.is_converted = true;
    return result;
}

}  // namespace

std::vector<std::uint8_t> ImportedFrame::head(std::size_t count) const {
    return is_packed ? ByteVector() : head_of(from(body, prefix), count);
}

std::optional<ImportedFrame> import_frame(BinaryFile& file, std::uint8_t version,
                                          const PublicFrame& frame) {
    FileContent content;
    content.append(file, {frame.body, frame.body_end});
    if (version == kOldestVersion) {
        return import_version2(frame, std::move(content));
    }
    if (version == kNewestVersion) {
        return import_version4(frame, std::move(content));
    }
    return import_version3(frame, std::move(content));
}

}  // namespace brindle
