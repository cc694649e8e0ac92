#include "bridges/bridge.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>

#include "bridges/custom_text.h"
#include "bridges/rdxl.h"
#include "bridges/seconds_fields.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

struct SystemWord {
    PlayoutSystem system;
    const char* word;
};
constexpr std::array<SystemWord, 3> kWords{{
    {PlayoutSystem::Liquidsoap, "liquidsoap"},
    {PlayoutSystem::AzuraCast, "azuracast"},
    {PlayoutSystem::Rivendell, "rivendell"},
}};

// A file's time as a system counts it.
class SystemTime {
public:
    // Liquidsoap removes the samples that the encoder adds around the sound, and AzuraCast plays
    // with Liquidsoap.
    SystemTime(PlayoutSystem system, const PlayingTime& playing)
        : time_(playing), trims_(system != PlayoutSystem::Rivendell) {}

    [[nodiscard]] std::int64_t end() const {
        return trims_ ? time_.trimmed.length() : time_.length;
    }
    [[nodiscard]] std::int64_t of_host(std::int64_t point) const {
        return trims_ ? time_.trimmed.trimmed(point) : point;
    }
    // For both, 0 means the beginning, and that no point is set.
    [[nodiscard]] std::int64_t to_host(const FieldPoint& point) const {
        const std::int64_t at =
            trims_ && point.at > 0 ? time_.trimmed.untrimmed(point.at) : point.at;
        if (at > time_.length + kRoundingOfPoints) {
            throw BridgeError(point.field + " is at " + milliseconds_text(at) +
                              ", the audio ends at " + milliseconds_text(time_.length));
        }
        return std::min(at, time_.length);
    }

private:
    const PlayingTime& time_;
    const bool trims_;
};

SystemPoints read_points(PlayoutSystem system, const TagFacts& facts, std::int64_t end) {
    switch (system) {
        case PlayoutSystem::Liquidsoap:
            return read_seconds(liquidsoap_fields(), facts, end);
        case PlayoutSystem::AzuraCast:
            return read_seconds(azuracast_fields(), facts, end);
        default:
            return read_rdxl(facts);
    }
}

std::vector<CustomField> fields_to_write(PlayoutSystem system, const WantedPoints& wanted,
                                         const TagFacts& facts, std::int64_t end) {
    switch (system) {
        case PlayoutSystem::Liquidsoap:
            return seconds_to_write(liquidsoap_fields(), wanted, facts, end);
        case PlayoutSystem::AzuraCast:
            return seconds_to_write(azuracast_fields(), wanted, facts, end);
        default:
            return rdxl_to_write(wanted, facts);
    }
}

void check_range(const char* name, std::int64_t point, std::int64_t length) {
    const std::string told = std::string(name) + " at " + milliseconds_text(point);
    if (point < 0) {
        throw BridgeError(told + " is before the beginning");
    }
    if (point > length) {
        throw BridgeError(told + ", the audio ends at " + milliseconds_text(length));
    }
}

// Brindle's point, or the system's if none is set.
std::optional<std::int64_t> point_or(std::int64_t ours, const std::optional<FieldPoint>& theirs,
                                     const SystemTime& time) {
    if (ours != 0) {
        return time.of_host(ours);
    }
    const bool is_inside = theirs && theirs->at <= time.end();
    return is_inside ? std::optional(theirs->at) : std::nullopt;
}

// Brindle has no cue-out: that of the system stays if it is possible.
std::int64_t cue_out_for(const WantedPoints& wanted, const std::optional<FieldPoint>& theirs,
                         const SystemTime& time) {
    const std::int64_t least = std::max(wanted.cue_in, wanted.next_start.value_or(0));
    const bool stays = theirs && theirs->at > 0 && theirs->at >= least &&
                       theirs->at <= time.end() + kRoundingOfPoints;
    // A point may be in what the system leaves out at the end.
    return stays ? theirs->at : std::max(time.end(), least);
}

}  // namespace

std::vector<std::string> playout_system_words() {
    std::vector<std::string> words(kWords.size());
    std::transform(kWords.begin(), kWords.end(), words.begin(),
                   [](const SystemWord& one) { return one.word; });
    return words;
}

// The last one needs no comparison: the command line takes no other words.
PlayoutSystem playout_system_of(const std::string& word) {
    return std::find_if(kWords.begin(), kWords.end() - 1,
                        [&](const SystemWord& one) { return one.word == word; })
        ->system;
}

std::string word_of(PlayoutSystem system) {
    return std::find_if(kWords.begin(), kWords.end() - 1,
                        [&](const SystemWord& one) { return one.system == system; })
        ->word;
}

std::optional<std::string> reason_against(PlayoutSystem system) {
    return system == PlayoutSystem::Rivendell ? reason_against_rdxl() : std::nullopt;
}

std::vector<CustomField> exported(PlayoutSystem system, const HostPoints& points,
                                  const TagFacts& facts, const PlayingTime& playing) {
    check_range("cue-in", points.cue_in, playing.length);
    check_range("intro", points.intro, playing.length);
    check_range("secondary tone", points.sectone, playing.length);
    const SystemTime time(system, playing);
    const SystemPoints there = read_points(system, facts, time.end());
    WantedPoints wanted;
    wanted.cue_in = point_or(points.cue_in, there.cue_in, time).value_or(0);
    wanted.next_start = point_or(points.sectone, there.next_start, time);
    wanted.talk_end = point_or(points.intro, there.talk_end, time);
    wanted.cue_out = cue_out_for(wanted, there.cue_out, time);
    return fields_to_write(system, wanted, facts, time.end());
}

bool has_fields_of(PlayoutSystem system, const TagFacts& facts) {
    const auto has_any = [&](std::span<const SecondsField> fields) {
        return std::any_of(fields.begin(), fields.end(), [&](const SecondsField& field) {
            return custom_text(facts, field.name).has_value();
        });
    };
    switch (system) {
        case PlayoutSystem::Liquidsoap:
            return has_any(liquidsoap_fields());
        case PlayoutSystem::AzuraCast:
            return has_any(azuracast_fields());
        default:
            return custom_text(facts, kRdxlName).has_value();
    }
}

HostPoints imported(PlayoutSystem system, const TagFacts& facts, const PlayingTime& playing) {
    const SystemTime time(system, playing);
    SystemPoints there = read_points(system, facts, time.end());
    if (!there.errors.empty()) {
        throw BridgeError(there.errors.front());
    }
    // Without another field the next begins where playing ends.
    const bool ends_early = there.cue_out && there.cue_out->at + kRoundingOfPoints < time.end();
    if (!there.next_start && ends_early) {
        there.next_start = there.cue_out;
    }
    const auto point = [&](const std::optional<FieldPoint>& theirs) {
        return theirs ? time.to_host(*theirs) : 0;
    };
    return {point(there.cue_in), point(there.talk_end), point(there.next_start)};
}

std::vector<SharedPoint> disagreements(const HostPoints& points, const TagFacts& facts,
                                       const PlayingTime& playing) {
    std::vector<SharedPoint> found;
    const auto compare = [&](std::string_view name, std::int64_t ours,
                             const std::optional<FieldPoint>& theirs) {
        const auto agrees = [&](std::int64_t point) {
            return std::abs(theirs->at - point) <= kRoundingOfPoints;
        };
        // A point of 0 is none.
        if (ours != 0 && theirs && !agrees(ours) && !agrees(playing.trimmed.trimmed(ours))) {
            found.push_back({name, theirs->field, ours, theirs->at});
        }
    };
    const auto compare_all = [&](const SystemPoints& there) {
        compare("cue-in", points.cue_in, there.cue_in);
        compare("sectone", points.sectone, there.next_start);
        compare("intro", points.intro, there.talk_end);
    };
    SystemPoints liquidsoap = read_seconds(liquidsoap_fields(), facts, playing.trimmed.length());
    if (!liquidsoap.cue_out) {
        // An overlap is then relative to an end that not all players agree on.
        liquidsoap.next_start.reset();
    }
    compare_all(liquidsoap);
    // One by one, as two may say the same point.
    for (std::size_t i = 0; i < azuracast_fields().size(); ++i) {
        compare_all(
            read_seconds(azuracast_fields().subspan(i, 1), facts, playing.trimmed.length()));
    }
    try {
        compare_all(read_rdxl(facts));
    } catch (const BridgeError&) {
        // Without a value there is nothing to compare.
    }
    return found;
}

}  // namespace brindle::host
