#include "listening_json.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "listening_text.h"
#include "output/json_values.h"
#include "trimmed_time.h"

namespace brindle::host {

namespace {

// Points as a player counts that leaves out what the encoder has put around the sound.
class TrimmedPoints {
public:
    explicit TrimmedPoints(const Listening& heard)
        : time_(heard.delay, heard.frequency, heard.milliseconds) {}

    [[nodiscard]] std::int64_t operator()(std::int64_t point) const {
        return std::min(time_.trimmed(point), time_.length());
    }

private:
    TrimmedTime time_;
};

Json number(std::optional<double> value, double precision) {
    // Less than half of it below zero is not -0.
    return value ? Json(std::round(*value / precision) * precision + 0.0) : Json(nullptr);
}

Json hundredths(std::optional<double> value) {
    constexpr double kHundred = 100;
    return value ? Json(std::round(*value * kHundred) / kHundred + 0.0) : Json(nullptr);
}

void add_point(Json& facts, const std::string& name, const std::string& trimmed_name, bool is_known,
               std::int64_t point, const TrimmedPoints& trimmed) {
    facts[name] = is_known ? Json(point) : Json(nullptr);
    facts[trimmed_name] = is_known ? Json(trimmed(point)) : Json(nullptr);
}

Json silences(const Listening& heard, const TrimmedPoints& trimmed) {
    Json list = Json::array();
    for (const TimeRange& silence : heard.silences) {
        list.push_back(Json{{"begin_ms", silence.begin},
                            {"end_ms", silence.end},
                            {"begin_trimmed_ms", trimmed(silence.begin)},
                            {"end_trimmed_ms", trimmed(silence.end)}});
    }
    return list;
}

Json undecoded(const UndecodedFrames& frames) {
    if (frames.count == 0) {
        return nullptr;
    }
    return Json{{"frames", frames.count},
                {"offset", frames.offset},
                {"ms", frames.milliseconds},
                {"reason", reason_of(frames.fault)}};
}

}  // namespace

Json listening_facts(const Listening& heard, double reference) {
    const TrimmedPoints trimmed(heard);
    const bool has_sound = heard.sound.has_value();
    const TimeRange sound = heard.sound.value_or(TimeRange());
    const Json style = heard.end ? Json(word(*heard.end)) : Json(nullptr);

    Json facts;
    facts["duration_ms"] = heard.milliseconds;
    facts["loudness_lufs"] = hundredths(heard.loudness);
    facts["reference"] = word(heard.reference);
    facts["gain_db"] =
        hundredths(heard.loudness ? std::optional(reference - *heard.loudness) : std::nullopt);
    facts["range_lu"] = hundredths(heard.range);
    facts["true_peak_dbtp"] = hundredths(heard.true_peak);
    facts["sample_peak"] = number(heard.sample_peak, 1e-6);
    add_point(facts, "sound_begin_ms", "sound_begin_trimmed_ms", has_sound, sound.begin, trimmed);
    add_point(facts, "sound_end_ms", "sound_end_trimmed_ms", has_sound, sound.end, trimmed);
    facts["silences"] = silences(heard, trimmed);
    facts["silence_count"] = heard.silence_count;
    facts["clipped"] = heard.clipped_runs;
    facts["clipped_at_ms"] = heard.clipped_at;
    facts["end"] = style;
    Json suggest;
    add_point(suggest, "cue-in", "cue-in_trimmed_ms", has_sound, sound.begin, trimmed);
    add_point(suggest, "sectone", "sectone_trimmed_ms", heard.next_start.has_value(),
              heard.next_start.value_or(0), trimmed);
    suggest["end-style"] = style;
    facts["suggest"] = std::move(suggest);
    facts["undecoded"] = undecoded(heard.undecoded);
    facts["frames_cut_off"] = heard.frames_cut_off;
    return facts;
}

std::string listening_json_line(const std::string& name, const Listening& heard, double reference,
                                const std::optional<std::string>& error) {
    Json facts = listening_facts(heard, reference);
    if (error) {
        facts["error"] = *error;
    }
    return json_line(name, facts);
}

}  // namespace brindle::host
