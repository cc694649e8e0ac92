#include "bridges/seconds_fields.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include <brindle/text.h>

#include "bridges/custom_text.h"
#include "bridges/seconds.h"
#include "output/printable_text.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

constexpr std::array<SecondsField, 3> kLiquidsoap{{
    {u"liq_cue_in", SecondsMeaning::CueIn},
    {u"liq_cue_out", SecondsMeaning::CueOut},
    {u"liq_cross_duration", SecondsMeaning::Overlap},
}};
constexpr std::array<SecondsField, 4> kAzuraCast{{
    {u"cue_in", SecondsMeaning::CueIn},
    {u"cue_out", SecondsMeaning::CueOutFromEitherEnd},
    {u"cross_start_next", SecondsMeaning::NextStart},
    {u"liq_cross_start_next", SecondsMeaning::NextStart},
}};

// Of a foreign text, which may be long.
std::string quoted(const String& text) {
    constexpr std::size_t kLongest = 40;
    return in_quotes(text.size() > kLongest ? text.substr(0, kLongest) + u"..." : text);
}

class SecondsReader {
public:
    SecondsReader(const TagFacts& facts, std::int64_t end) : facts_(facts), end_(end) {}

    SystemPoints read(std::span<const SecondsField> fields) {
        for (const SecondsField& field : fields) {
            read(field);
        }
        return std::move(points_);
    }

private:
    void read(const SecondsField& field) {
        const String text = custom_text(facts_, field.name).value_or(String());
        if (text.find_first_not_of(u" \t") == String::npos) {
            return;
        }
        const std::string name = to_utf8(field.name);
        const std::string told = name + " is " + quoted(text) + ", ";
        const auto number = milliseconds_in(text);
        if (!number) {
            points_.errors.push_back(told + "no number");
            return;
        }
        constexpr std::int64_t kMax = 1'000'000'000;
        if (std::abs(*number) > kMax) {
            points_.errors.push_back(told + "beyond any file's end");
            return;
        }
        const bool is_length = field.meaning == SecondsMeaning::Overlap;
        const std::int64_t at = point(field.meaning, *number);
        if (at < 0 || (is_length && *number < 0)) {
            points_.errors.push_back(told + "before the beginning");
            return;
        }
        take(field.meaning, {name, at});
    }

    [[nodiscard]] std::int64_t point(SecondsMeaning meaning, std::int64_t number) const {
        switch (meaning) {
            case SecondsMeaning::CueOutFromEitherEnd:
                return number < 0 ? end_ + number : number;
            case SecondsMeaning::Overlap:
                return (points_.cue_out ? points_.cue_out->at : end_) - number;
            default:
                return number;
        }
    }

    void take(SecondsMeaning meaning, const FieldPoint& point) {
        std::optional<FieldPoint>& place =
            meaning == SecondsMeaning::CueIn ? points_.cue_in
            : meaning == SecondsMeaning::CueOut || meaning == SecondsMeaning::CueOutFromEitherEnd
                ? points_.cue_out
                : points_.next_start;
        if (!place) {
            place = point;
        } else if (std::abs(place->at - point.at) > kRoundingOfPoints) {
            points_.errors.push_back(place->field + " is at " + milliseconds_text(place->at) +
                                     ", " + point.field + " at " + milliseconds_text(point.at));
        }
    }

    const TagFacts& facts_;
    const std::int64_t end_;
    SystemPoints points_;
};

// ms that the field is to hold; nothing for a point that is not wanted.
std::optional<std::int64_t> wanted_number(const SecondsField& field, const WantedPoints& wanted) {
    switch (field.meaning) {
        case SecondsMeaning::CueIn:
            return wanted.cue_in;
        case SecondsMeaning::CueOut:
        case SecondsMeaning::CueOutFromEitherEnd:
            return wanted.cue_out;
        case SecondsMeaning::NextStart:
            return wanted.next_start;
        default:
            return wanted.next_start ? std::optional(wanted.cue_out - *wanted.next_start)
                                     : std::nullopt;
    }
}

bool has_value(const SecondsField& field, std::int64_t wanted, const TagFacts& facts,
               std::int64_t end) {
    const auto text = facts.custom(field.name);
    if (!text) {
        return false;
    }
    const auto number = milliseconds_in(*text);
    if (!number) {
        return false;
    }
    const bool is_from_end = field.meaning == SecondsMeaning::CueOutFromEitherEnd && *number < 0;
    return (is_from_end ? end + *number : *number) == wanted;
}

}  // namespace

std::span<const SecondsField> liquidsoap_fields() {
    return kLiquidsoap;
}

std::span<const SecondsField> azuracast_fields() {
    return kAzuraCast;
}

SystemPoints read_seconds(std::span<const SecondsField> fields, const TagFacts& facts,
                          std::int64_t end) {
    return SecondsReader(facts, end).read(fields);
}

std::vector<CustomField> seconds_to_write(std::span<const SecondsField> fields,
                                          const WantedPoints& wanted, const TagFacts& facts,
                                          std::int64_t end) {
    std::vector<CustomField> made;
    for (const SecondsField& field : fields) {
        const auto number = wanted_number(field, wanted);
        const bool stays = !number || (has_value(field, *number, facts, end) &&
                                       texts_named(facts, field.name).size() == 1);
        if (!stays) {
            made.push_back({String(field.name), from_utf8(seconds_text(*number))});
        }
    }
    return made;
}

}  // namespace brindle::host
