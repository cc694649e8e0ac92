// The members of cMP3ID3v2 for custom fields and the radio fields kept in them.
#include <string_view>
#include <variant>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/custom_field_names.h"
#include "util/numeric_text.h"

namespace brindle {

namespace {

// Left in a tag when it gets its first custom field.
const String kStampValue = u"CorvaneTagger - Revised Feb 2011";

String field_text(const String& name, const String& value) {
    return name + kSeparator + value;
}

}  // namespace

void cMP3ID3v2::AddCustomField(const String& CustomFieldName, const String& CustomFieldValue) {
    if (file_name_.empty()) {
        return;
    }
    const String frame(kCustomFrame);
    if (!contents_->frames.is_listed(frame)) {
        AddTag(frame, field_text(kSavedStampName, kStampValue));
    }
    replace_value(frame, CustomFieldName, field_text(CustomFieldName, CustomFieldValue));
    contents_->custom.set(CustomFieldName, CustomFieldValue);
}

String cMP3ID3v2::GetCustomField(const Variant& FieldName) const {
    if (const auto* const name = std::get_if<String>(&FieldName)) {
        return contents_->custom.text(*name);
    }
    return contents_->custom.text(to_text(FieldName));
}

bool cMP3ID3v2::CustomFieldExists(const String& Desc) const {
    return contents_->custom.exists(Desc);
}

String cMP3ID3v2::custom_text(std::string_view name) const {
    return contents_->custom.text(name);
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

}  // namespace brindle
