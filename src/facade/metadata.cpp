// The facade's properties of tags and scheduling: which field each one accesses, and how values
// are converted.
#include <string_view>

#include <brindle/cMPEGHeader.h>

#include "facade/model_access.h"
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/custom_field_names.h"
#include "util/numeric_text.h"
#include "util/skip_errors.h"
#include "util/trim_chars.h"

namespace brindle {

namespace {

using Model = std::unique_ptr<cMP3ID3v2>;

const String kCategoryName(kCategory.begin(), kCategory.end());

String field(const Model& model, std::string_view name) {
    return read_or_default(model, [&](const cMP3ID3v2& m) { return m.custom_text(name); });
}

void set_field(const Model& model, std::string_view name, const String& value) {
    try_modify(model, [&](cMP3ID3v2& m) { m.set_custom(name, value); });
}

void set_field(const Model& model, std::string_view name, std::int32_t value) {
    try_modify(model, [&](cMP3ID3v2& m) { m.set_custom(name, to_text(value)); });
}

std::int16_t integer_or_0(const String& text) {
    return number_or_0<std::int16_t>(text, to_integer);
}

std::int32_t long_or_0(const String& text) {
    return number_or_0<std::int32_t>(text, to_long);
}

}  // namespace

std::int16_t cMPEGHeader::FrameCount() const {
    return read_or_default(
        model_, [](const cMP3ID3v2& m) { return static_cast<std::int16_t>(m.FrameCount()); });
}

std::shared_ptr<KeyedCollection> cMPEGHeader::v2Frames() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Frames(); });
}

String cMPEGHeader::v2Tag(const String& sFrame, std::int32_t indexInFrame) const {
    return read_or_default(model_, [&](cMP3ID3v2& m) { return m.Tag(sFrame, indexInFrame); });
}

std::int32_t cMPEGHeader::TagsInFrame(const String& sFrame) const {
    return read_or_default(model_, [&](const cMP3ID3v2& m) { return m.TagsInFrame(sFrame); });
}

// --- Descriptive fields.

String cMPEGHeader::Title() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Title(); });
}
void cMPEGHeader::Title(const String& value) {
    if (!separate_) {
        Titlev1Tag(value);
    }
    Song(value);
}

void cMPEGHeader::Song(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Title(value); });
}

String cMPEGHeader::Artist() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Artist(); });
}
void cMPEGHeader::Artist(const String& value) {
    if (!separate_) {
        artistv1Tag(value);
    }
    try_modify(model_, [&](cMP3ID3v2& m) { m.Artist(value); });
}

String cMPEGHeader::Album() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Album(); });
}
void cMPEGHeader::Album(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Album(value); });
}

std::int16_t cMPEGHeader::Year() const {
    return integer_or_0(read_or_default(model_, [](const cMP3ID3v2& m) { return m.Year(); }));
}
void cMPEGHeader::Year(std::int16_t value) {
    if (!separate_) {
        Yearv1Tag(value);
    }
    try_modify(model_, [&](cMP3ID3v2& m) { m.Year(to_text(std::int32_t{value})); });
}

std::int16_t cMPEGHeader::Track() const {
    return integer_or_0(read_or_default(model_, [](const cMP3ID3v2& m) { return m.Track(); }));
}
void cMPEGHeader::Track(std::int16_t value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Track(to_text(std::int32_t{value})); });
}

String cMPEGHeader::Genre() const {
    return read_or_default(model_,
                           [](const cMP3ID3v2& m) { return to_text(std::int32_t{m.Genre()}); });
}
void cMPEGHeader::Genre(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Genre(to_byte(value)); });
}

String cMPEGHeader::Comments() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Comment(); });
}
void cMPEGHeader::Comments(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Comment(value); });
}

String cMPEGHeader::Composer() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Composer(); });
}
void cMPEGHeader::Composer(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Composer(value); });
}

String cMPEGHeader::Publisher() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Publisher(); });
}
void cMPEGHeader::Publisher(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Publisher(value); });
}

String cMPEGHeader::CopyRight() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.CopyRight(); });
}
void cMPEGHeader::CopyRight(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.CopyRight(value); });
}

String cMPEGHeader::URL() const {
    return ArtistUrl();
}
void cMPEGHeader::URL(const String& value) {
    ArtistUrl(value);
}

String cMPEGHeader::ArtistUrl() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.ArtistUrl(); });
}
void cMPEGHeader::ArtistUrl(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.ArtistUrl(value); });
}

// --- Scheduling fields.

double cMPEGHeader::Speed() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Speed(); });
}
void cMPEGHeader::Speed(double value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Speed(value); });
}

std::int32_t cMPEGHeader::Volume() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Volume(); });
}
void cMPEGHeader::Volume(std::int32_t value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Volume(value); });
}

// A Boolean handed out as a number: true is -1.
std::int32_t cMPEGHeader::Opener() const {
    return read_or_default(model_,
                           [](const cMP3ID3v2& m) { return std::int32_t{m.Opener() ? -1 : 0}; });
}
void cMPEGHeader::Opener(std::int32_t value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Opener(value != 0); });
}

std::int32_t cMPEGHeader::CueInmSStart() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.CueIn(); });
}
void cMPEGHeader::CueInmSStart(std::int32_t value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.CueIn(value); });
}

std::int32_t cMPEGHeader::Sectone() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Sectonemsend(); });
}
void cMPEGHeader::Sectone(std::int32_t value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Sectonemsend(value); });
}

String cMPEGHeader::CategoryLevel() const {
    return read_or_default(
        model_, [](const cMP3ID3v2& m) { return to_text(std::int32_t{m.CategoryLevel()}); });
}
void cMPEGHeader::CategoryLevel(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.CategoryLevel(to_integer(value)); });
}

std::int32_t cMPEGHeader::Intro() const {
    return long_or_0(field(model_, kIntro));
}
void cMPEGHeader::Intro(std::int32_t value) {
    set_field(model_, kIntro, value);
}

std::int32_t cMPEGHeader::OutromsStart() const {
    return number_or_0<std::int32_t>(field(model_, kOutro), [](std::u16string_view text) {
        return round_to_long(to_double(text));
    });
}
void cMPEGHeader::OutromsStart(std::int32_t value) {
    set_field(model_, kOutro, value);
}

Variant cMPEGHeader::Category() const {
    return CustomFieldExists(kCategoryName) ? CustomFieldRetrieve(kCategoryName) : Variant();
}
void cMPEGHeader::Category(const Variant& value) {
    CustomFieldAdd(kCategoryName, value);
}

String cMPEGHeader::Endstyle() const {
    return field(model_, kEndstyle);
}
void cMPEGHeader::Endstyle(const String& value) {
    set_field(model_, kEndstyle, value);
}

std::int16_t cMPEGHeader::NoFade() const {
    return integer_or_0(field(model_, kNoFade));
}
void cMPEGHeader::NoFade(std::int16_t value) {
    set_field(model_, kNoFade, std::int32_t{value});
}

String cMPEGHeader::Agency() const {
    return field(model_, kAgency);
}
void cMPEGHeader::Agency(const String& value) {
    set_field(model_, kAgency, value);
}

String cMPEGHeader::AccountExec() const {
    return field(model_, kAccountExec);
}
void cMPEGHeader::AccountExec(const String& value) {
    set_field(model_, kAccountExec, value);
}

String cMPEGHeader::Copy() const {
    return field(model_, kCopy);
}
void cMPEGHeader::Copy(const String& value) {
    set_field(model_, kCopy, value);
}

// --- Custom fields.

void cMPEGHeader::CustomFieldAdd(const String& FieldDescriptor, const Variant& FieldValue) {
    try_modify(model_,
               [&](cMP3ID3v2& m) { m.AddCustomField(FieldDescriptor, to_text(FieldValue)); });
}

bool cMPEGHeader::CustomFieldExists(const String& FieldDescriptor) const {
    return read_or_default(
        model_, [&](const cMP3ID3v2& m) { return m.CustomFieldExists(FieldDescriptor); });
}

Variant cMPEGHeader::CustomFieldRetrieve(const String& FieldDescriptor) const {
    return read_or_default(
        model_, [&](const cMP3ID3v2& m) { return Variant(m.GetCustomField(FieldDescriptor)); });
}

std::vector<CustomField> cMPEGHeader::CustomFields() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.custom_fields(); });
}

void cMPEGHeader::CustomFieldRemove(const String& FieldDescriptor) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.remove_custom(FieldDescriptor); });
}

// --- The ID3v1 record.

String cMPEGHeader::Titlev1Tag() const {
    return read_or_default(
        model_, [](const cMP3ID3v2& m) { return TrimChars(m.Titlev1Tag(), u" ", kBinaryCompare); });
}
void cMPEGHeader::Titlev1Tag(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Titlev1Tag(value); });
}

String cMPEGHeader::artistv1Tag() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) {
        return TrimChars(m.artistv1Tag(), u" ", kBinaryCompare);
    });
}
void cMPEGHeader::artistv1Tag(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.artistv1Tag(value); });
}

std::int16_t cMPEGHeader::Yearv1Tag() const {
    return integer_or_0(read_or_default(model_, [](const cMP3ID3v2& m) { return m.Yearv1Tag(); }));
}
void cMPEGHeader::Yearv1Tag(std::int16_t value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Yearv1Tag(to_text(std::int32_t{value})); });
}

// Untrimmed, unlike title and artist.
String cMPEGHeader::Commentv1() const {
    return read_or_default(model_, [](const cMP3ID3v2& m) { return m.Commentsv1(); });
}
void cMPEGHeader::Commentv1(const String& value) {
    try_modify(model_, [&](cMP3ID3v2& m) { m.Commentsv1(value); });
}

}  // namespace brindle
