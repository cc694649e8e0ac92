// The members of cMP3ID3v2 that list and edit frames and their values.
#include <algorithm>
#include <new>
#include <utility>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

std::int32_t cMP3ID3v2::FrameCount() const {
    return contents_->frames.frame_list()->Count();
}

String cMP3ID3v2::Frame(std::int32_t index) const {
    String id;
    skip_errors([&] { id = to_text(contents_->frames.frame_list()->Item(index)); });
    return id;
}

std::shared_ptr<KeyedCollection> cMP3ID3v2::Frames() const {
    return contents_->frames.frame_list();
}

std::int32_t cMP3ID3v2::TagsInFrame(const Variant& Frame) const {
    return contents_->frames.count(to_text(Frame)).value_or(0);
}

String cMP3ID3v2::Tag(const String& sFrame, std::int32_t indexInFrame) {
    const StoredText* value = contents_->frames.value(sFrame, indexInFrame);
    last_error_ = value != nullptr ? 0 : static_cast<std::int32_t>(RuntimeError::ValueNotFound);
    return value != nullptr ? value->wide() : String();
}

void cMP3ID3v2::AddTag(const String& sFrame, const String& sTag, std::int32_t IndexToAddInto) {
    contents_->frames.add(sFrame, sTag, IndexToAddInto);
}

// The key "COMM:2" has always been taken for a position, which no such text is.
void cMP3ID3v2::RemoveTag(const String& /*sFrame*/, std::int32_t /*tagIndex*/) {
    throw Error(RuntimeError::TypeMismatch, kWriterSource);
}

void cMP3ID3v2::RemoveFrame(const Variant& Frame, const String& CustomFrameTitle,
                            std::int32_t& IndexRemoved) {
    FrameStore& frames = contents_->frames;
    const String id = to_text(Frame);
    if (id == kCustomFrame) {
        if (CustomFrameTitle.empty()) {
            IndexRemoved = 0;
            if (Owner != nullptr) {
                Owner->show_message(u"You need to send a CustomFrameTitle to perform this!");
            }
        } else {
            IndexRemoved = frames.find_custom(CustomFrameTitle);
            if (IndexRemoved == 0) {
                return;
            }
        }
    }
    if (!frames.frame_list()->Exists(id)) {
        return;
    }
    if (IndexRemoved != 0) {
        frames.remove_value(id, IndexRemoved);
    } else {
        frames.remove_frame(id);
    }
}

void cMP3ID3v2::RemoveFrame(const Variant& Frame, const String& CustomFrameTitle) {
    std::int32_t index = 0;
    RemoveFrame(Frame, CustomFrameTitle, index);
}

void cMP3ID3v2::text(StandardField field, const String& value) {
    contents_->fields.set(field, StoredText(value));
    const StandardFieldRow& row = row_of(field);
    replace_frame(row.frame_id, String(row.held_prefix) + value);
}

void cMP3ID3v2::Genre(std::uint8_t value) {
    contents_->genre = value;
    OtherGenreName(OtherGenreName());
}

void cMP3ID3v2::OtherGenreName(const String& value) {
    constexpr StandardField kField = StandardField::OtherGenreName;
    contents_->fields.set(kField, StoredText(value));
    replace_frame(row_of(kField).frame_id, u"(" + to_text(std::int32_t{Genre()}) + u")" + value);
}

void cMP3ID3v2::replace_frame(std::u16string_view id, const String& held) {
    replace_value(String(id), {}, held);
}

// A value that was removed and could not be put back must not be missing in the file too, so then
// nothing is saved any more.
void cMP3ID3v2::replace_value(const String& id, const String& custom_name, const String& held) {
    try {
        std::int32_t index = 0;
        RemoveFrame(id, custom_name, index);
        AddTag(id, held, index);
        const auto same = std::find_if(edited_.begin(), edited_.end(), [&](const SetValue& value) {
            return value.id == id && value.custom_name == custom_name;
        });
        if (same != edited_.end()) {
            same->held = held;
        } else {
            edited_.push_back({id, custom_name, held});
        }
    } catch (const std::bad_alloc&) {
        fault_ = kOutOfMemory;
        throw;
    }
}

}  // namespace brindle
