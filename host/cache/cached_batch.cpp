#include "cache/cached_batch.h"

#include <chrono>
#include <utility>

#include "output/standard_streams.h"

namespace brindle::host {

namespace {

// File times have a resolution of 2 seconds on some systems, and those of a share another clock.
constexpr std::int64_t kSettlingSeconds = 2;

// A row is marked again after this time, so that it is not removed as old.
constexpr std::int64_t kDaysBetweenMarks = 7;

std::int64_t seconds_now() {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now())
        .time_since_epoch()
        .count();
}

// Whether a change after `seconds` would show in the identity.
bool is_settled(const FileIdentity& identity, std::int64_t seconds) {
    return identity.changed < seconds - kSettlingSeconds;
}

// Outputs of another version may be other ones.
std::string options_of(const std::string& command) {
    return BRINDLE_VERSION "\n" + command;
}

}  // namespace

bool lacks_cache(const CacheOptions& cache, const std::string& command) {
    const auto reason = cache.file ? reason_against_caching() : std::nullopt;
    if (reason) {
        write_error(command + " --cache: " + *reason);
    }
    return reason.has_value();
}

CachedBatch::CachedBatch(const BatchOptions& options, const CacheOptions& cache,
                         const std::string& command)
    : options_(options), cache_options_(cache) {
    if (cache.file) {
        cache_.emplace(*cache.file, options_of(command));
    }
}

BatchOutcome CachedBatch::run(const Read& read, const Count& count, const Present& present) {
    const Work work{read, count, present};
    BatchOutcome outcome =
        run_batch(options_, [&](const FoundName& found) { return answer_for(found, work); });
    outcome.has_only_new = cache_options_.only_new;
    if (const auto reason = cache_ ? cache_->finish() : std::nullopt) {
        write_error(*cache_options_.file, *reason + "; the cache does not hold all of this run");
    }
    return outcome;
}

std::optional<std::string> CachedBatch::record_of(const std::string& command,
                                                  const std::string& name,
                                                  const FileIdentity& identity) {
    auto cached = cache_->find_of(options_of(command), name, identity);
    return cached && cached->is_settled ? std::optional(std::move(cached->output)) : std::nullopt;
}

Answer CachedBatch::answer_for(const FoundName& found, const Work& work) {
    const auto identity = cache_ && !found.failure ? identity_of(found.name) : std::nullopt;
    return identity ? cached_answer(found, *identity, work)
                    : finished_answer(work.read(found), found.name, nullptr, work);
}

Answer CachedBatch::finished_answer(FileResult result, const std::string& name,
                                    const FileIdentity* identity, const Work& work) {
    if (!result.answer.error) {
        static_cast<void>(work.count(result.counted));
        if (work.present) {
            result.answer.output = work.present(name, identity, result.record).value_or("");
        }
    }
    return std::move(result.answer);
}

Answer CachedBatch::cached_answer(const FoundName& found, const FileIdentity& identity,
                                  const Work& work) {
    const std::int64_t begin = seconds_now();
    const auto cached = cache_->find(found.name, identity);
    if (cached && cached->is_settled) {
        if (auto answer = answer_from(*cached, found.name, identity, work)) {
            return *std::move(answer);
        }
    }
    const FileStatus status{FileKind::Regular, identity.size, identity.modified};
    FileResult result = work.read({found.name, found.failure, status});
    if (result.answer.error || !result.is_lasting || identity_of(found.name) != identity) {
        return finished_answer(std::move(result), found.name, &identity, work);
    }
    CachedAnswer now{.output = work.present ? result.record : result.answer.output,
                     .counted = result.counted,
                     .is_settled = is_settled(identity, begin),
                     .run = cache_->run(),
                     .day = cache_->today()};
    Answer answer;
    // The file was read again, and the output is the same.
    if (cached && is_old(*cached) && cached->output == now.output &&
        cached->counted == now.counted) {
        answer.is_unchanged = true;
        answer.bytes = result.answer.bytes;
        now.run = cached->run;
    } else {
        answer = finished_answer(std::move(result), found.name, &identity, work);
    }
    store_when_written(answer, found.name, identity, std::move(now));
    return answer;
}

std::optional<Answer> CachedBatch::answer_from(const CachedAnswer& cached, const std::string& name,
                                               const FileIdentity& identity, const Work& work) {
    Answer answer;
    answer.is_unchanged = is_old(cached);
    answer.bytes = identity.size;
    if (!answer.is_unchanged) {
        auto output = work.present ? work.present(name, &identity, cached.output)
                                   : std::optional(cached.output);
        if (!output || !work.count(cached.counted)) {
            return std::nullopt;
        }
        answer.output = *std::move(output);
    }
    if (cached.day > cache_->today() || cached.day + kDaysBetweenMarks <= cache_->today()) {
        store_when_written(answer, name, identity, cached);
    }
    return answer;
}

// An answer of this run is new, also if the file is named twice.
bool CachedBatch::is_old(const CachedAnswer& cached) const {
    return cache_options_.only_new && cached.run != cache_->run();
}

void CachedBatch::store_when_written(Answer& answer, const std::string& name,
                                     const FileIdentity& identity, CachedAnswer cached) {
    cached.day = cache_->today();
    answer.when_written = [this, name, identity, cached = std::move(cached)]() mutable {
        cache_->keep(name, identity, std::move(cached));
    };
}

}  // namespace brindle::host
