#include "id3v2/cMP3ID3v2.h"

#include <variant>

#include <brindle/genres.h>

#include "id3v2/custom_field_names.h"
#include "id3v2/error_sources.h"
#include "id3v2/tag_writer.h"
#include "util/numeric_text.h"
#include "util/skip_errors.h"

namespace brindle {

// --- The stream.

String cMP3ID3v2::MonoStereo() const {
    switch (reading_.analyser.ChannelMode()) {
        case 0:
            return u"Stereo";
        case 1:
            return u"Joint Stereo";
        case 2:  // dual channel: two languages, one of which is heard
        case 3:
            return u"Mono";
        default:
            return {};
    }
}

String cMP3ID3v2::MpegLayer() const {
    return to_text(std::int32_t{reading_.analyser.MpegLayer()});
}

String cMP3ID3v2::MpegVersion() const {
    return to_text(std::int32_t{reading_.analyser.MpegVersion()});
}

String cMP3ID3v2::GenreName(std::uint8_t Genre) const {
    return brindle::GenreName(Genre);
}

// --- Frames.

std::int32_t cMP3ID3v2::FrameCount() const {
    return reading_.tag().frames.frame_list()->Count();
}

String cMP3ID3v2::Frame(std::int32_t index) const {
    String id;
    skip_errors([&] { id = to_text(reading_.tag().frames.frame_list()->Item(index)); });
    return id;
}

std::shared_ptr<KeyedCollection> cMP3ID3v2::Frames() const {
    return reading_.tag().frames.frame_list();
}

std::int32_t cMP3ID3v2::TagsInFrame(const Variant& Frame) const {
    return reading_.tag().frames.count(to_text(Frame)).value_or(0);
}

String cMP3ID3v2::Tag(const String& sFrame, std::int32_t indexInFrame) {
    const StoredText* value = reading_.tag().frames.value(sFrame, indexInFrame);
    last_error_ = value != nullptr ? 0 : static_cast<std::int32_t>(RuntimeError::ValueNotFound);
    return value != nullptr ? value->wide() : String();
}

void cMP3ID3v2::AddTag(const String& sFrame, const String& sTag, std::int32_t IndexToAddInto) {
    reading_.tag().frames.add(sFrame, sTag, IndexToAddInto);
}

// The key "COMM:2" has always been taken for a position, which no such text is.
void cMP3ID3v2::RemoveTag(const String& /*sFrame*/, std::int32_t /*tagIndex*/) {
    throw Error(RuntimeError::TypeMismatch, kWriterSource);
}

void cMP3ID3v2::RemoveFrame(const Variant& Frame, const String& CustomFrameTitle,
                            std::int32_t& IndexRemoved) {
    const String id = to_text(Frame);
    if (id == kCustomFrame) {
        ask_for_description(CustomFrameTitle);
    }
    reading_.tag().remove(id, CustomFrameTitle, IndexRemoved);
}

void cMP3ID3v2::RemoveFrame(const Variant& Frame, const String& CustomFrameTitle) {
    std::int32_t index = 0;
    RemoveFrame(Frame, CustomFrameTitle, index);
}

// A user-defined text without one can't be told from the others: all of them are about to go.
void cMP3ID3v2::ask_for_description(const String& description) const {
    if (description.empty() && Owner != nullptr) {
        Owner->show_message(u"You need to send a CustomFrameTitle to perform this!");
    }
}

// --- Custom fields and the radio fields kept in them.

void cMP3ID3v2::AddCustomField(const String& CustomFieldName, const String& CustomFieldValue) {
    if (has_file()) {
        ask_for_description(CustomFieldName);
        reading_.tag().set_custom(CustomFieldName, CustomFieldValue);
    }
}

String cMP3ID3v2::GetCustomField(const Variant& FieldName) const {
    const CustomFields& fields = reading_.tag().custom();
    const auto* const name = std::get_if<String>(&FieldName);
    return name != nullptr ? fields.text(*name) : fields.text(to_text(FieldName));
}

bool cMP3ID3v2::CustomFieldExists(const String& Desc) const {
    return reading_.tag().custom().exists(Desc);
}

std::vector<CustomField> cMP3ID3v2::custom_fields() const {
    return reading_.tag().custom_fields();
}

void cMP3ID3v2::remove_custom(const String& name) {
    if (has_file() && !name.empty()) {
        reading_.tag().remove_custom(name);
    }
}

String cMP3ID3v2::custom_text(std::string_view name) const {
    return reading_.tag().custom().text(name);
}

void cMP3ID3v2::set_custom(std::string_view name, const String& value) {
    AddCustomField(String(name.begin(), name.end()), value);
}

std::int32_t cMP3ID3v2::Sectonemsend() const {
    return number_or_0<std::int32_t>(custom_text(kSecTone), to_long);
}

void cMP3ID3v2::Sectonemsend(std::int32_t NewSectonems) {
    set_custom(kSecTone, to_text(NewSectonems));
}

double cMP3ID3v2::Speed() const {
    return number_or_0<double>(custom_text(kSpeed), to_double);
}

void cMP3ID3v2::Speed(double NewTarnSpeed) {
    set_custom(kSpeed, to_text(NewTarnSpeed));
}

std::int32_t cMP3ID3v2::Volume() const {
    return number_or_0<std::int32_t>(custom_text(kVolume), to_long);
}

void cMP3ID3v2::Volume(std::int32_t NewVol) {
    set_custom(kVolume, to_text(NewVol));
}

bool cMP3ID3v2::Opener() const {
    return number_or_0<std::int32_t>(custom_text(kOpener), to_long) != 0;
}

void cMP3ID3v2::Opener(bool NewOpenerValue) {
    set_custom(kOpener, to_text(Variant(NewOpenerValue)));
}

std::int32_t cMP3ID3v2::CueIn() const {
    return number_or_0<std::int32_t>(custom_text(kCueIn), to_long);
}

void cMP3ID3v2::CueIn(std::int32_t NewCueInms) {
    set_custom(kCueIn, to_text(NewCueInms));
}

std::int16_t cMP3ID3v2::CategoryLevel() const {
    return number_or_0<std::int16_t>(custom_text(kCategoryLevel), to_integer);
}

void cMP3ID3v2::CategoryLevel(std::int16_t NewCatLevel) {
    set_custom(kCategoryLevel, to_text(std::int32_t{NewCatLevel}));
}

// --- The file.

void cMP3ID3v2::Update(const SaveOptions& options) {
    with_writer_memory([&] { TagWriter(reading_, Owner).save(options); });
}

bool cMP3ID3v2::StripTags(std::int32_t TagsToStrip) {
    return skip_errors([&] { RemoveTags(TagsToStrip, {}); });
}

void cMP3ID3v2::RemoveTags(std::int32_t tags, const SaveOptions& options) {
    if (strips_record(tags) || strips_tag(tags)) {
        as_writer([&] { TagWriter(reading_, Owner).strip(tags, options); });
    }
    skip_errors([&] { FileName(FileName()); });
}

void cMP3ID3v2::read_content(const String& name, const FileContent& content) {
    ContentFile file(content);
    FileWindow window(file);
    reading_.read(name, window, Owner);
}

FrameWalk cMP3ID3v2::walk_frames(const FrameVisitor& visit) const {
    return reading_.walk_frames(visit);
}

}  // namespace brindle
