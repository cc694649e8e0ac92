#include "listening_record.h"

#include <nlohmann/json.hpp>

// JSON has no optional values; null is none.
template <class Value>
struct nlohmann::adl_serializer<std::optional<Value>> {
    static void to_json(json& json, const std::optional<Value>& value) {
        if (value) {
            json = *value;
        } else {
            json = nullptr;
        }
    }

    static void from_json(const json& json, std::optional<Value>& value) {
        value = json.is_null() ? std::nullopt : std::optional(json.get<Value>());
    }
};

namespace brindle::host {

NLOHMANN_JSON_SERIALIZE_ENUM(Reference, {{Reference::Whole, "whole"},
                                         {Reference::Partial, "partial"},
                                         {Reference::ReplayGain, "replaygain"}})
NLOHMANN_JSON_SERIALIZE_ENUM(EndStyle, {{EndStyle::Cold, "cold"}, {EndStyle::Fade, "fade"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(TimeRange, begin, end)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(EncoderDelay, before, after)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ChannelBalance, energy, correlation)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Listening, frequency, channels, milliseconds, is_whole, delay,
                                   frames_cut_off, reference, loudness, range, true_peak,
                                   sample_peak, clipped_runs, clipped_at, balance, sound, silences,
                                   silence_count, next_start, end)

std::string listening_command(const ListenOptions& options) {
    return "listen " + nlohmann::json::array({options.quick, options.sound_range,
                                              options.overlap_range, options.shortest_silence})
                           .dump();
}

std::string listening_record(const Listening& heard) {
    return nlohmann::json(heard).dump();
}

std::optional<Listening> listening_in(std::string_view record) {
    try {
        auto heard = nlohmann::json::parse(record).get<Listening>();
        // Times with the encoder's delay removed are divided by it.
        return heard.frequency > 0 ? std::optional(std::move(heard)) : std::nullopt;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

}  // namespace brindle::host
