#include "cache/run_cache.h"

#include <chrono>
#include <mutex>
#include <random>
#include <utility>
#include <vector>

#include "cache/cache_file.h"
#include "cache/cache_schema.h"
#include "cache/database.h"

namespace brindle::host {

namespace {

using Clock = std::chrono::steady_clock;

// Far above the output for any file that is not an attack.
constexpr std::size_t kLongestOutput = std::size_t{1024} * 1024;

// Limits of one transaction.
constexpr std::size_t kMaxRows = 512;
constexpr std::size_t kMaxBytes = std::size_t{4} * 1024 * 1024;
constexpr std::chrono::seconds kLongestWait{1};

constexpr std::int64_t kDaysUntilForgotten = 90;
constexpr int kMaxForgotten = 4096;  // at the end of one run

constexpr const char* kFind =
    "SELECT settled, run, day, counted_1, counted_2, counted_3, output FROM files"
    " WHERE options = (SELECT id FROM options WHERE text = ?) AND volume = ? AND number = ?"
    " AND name = ? AND size = ? AND modified = ? AND modified_nanoseconds = ? AND changed = ?"
    " AND changed_nanoseconds = ?";

// Ids of options are looked up in each transaction: another run may have removed them.
constexpr const char* kAddOptions = "INSERT OR IGNORE INTO options(text) VALUES (?)";
constexpr const char* kKeep =
    "INSERT OR REPLACE INTO files(options, volume, number, name, size, modified,"
    " modified_nanoseconds, changed, changed_nanoseconds, settled, run, day, counted_1, counted_2,"
    " counted_3, output) VALUES ((SELECT id FROM options WHERE text = ?), ?, ?, ?, ?, ?, ?, ?, ?,"
    " ?, ?, ?, ?, ?, ?, ?)";

struct Row {
    std::string name;
    FileIdentity identity;
    CachedAnswer answer;
};

// The columns from the options on, as both statements have them.
void add_key(Statement& statement, std::string_view options, std::string_view name,
             const FileIdentity& identity) {
    statement.with(options)
        .with(static_cast<std::int64_t>(identity.volume))
        .with(static_cast<std::int64_t>(identity.number))
        .with(name)
        .with(identity.size)
        .with(identity.modified)
        .with(identity.modified_nanoseconds)
        .with(identity.changed)
        .with(identity.changed_nanoseconds);
}

std::int64_t random_number() {
    std::random_device device;
    constexpr unsigned kHalf = 31;
    return static_cast<std::int64_t>(device() >> 1U) << kHalf | device() >> 1U;
}

std::int64_t days_since_1970() {
    return std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())
        .time_since_epoch()
        .count();
}

}  // namespace

std::optional<std::string> reason_against_caching() {
    return std::nullopt;
}

struct RunCache::State {
    State(const std::string& file, std::string words) : options(std::move(words)) {
        const std::string path = prepare_cache_file(file);
        try {
            database.emplace(path);
            prepare_cache_schema(*database);
            lookup.emplace(*database, kFind);
        } catch (const CacheError& error) {
            throw CacheError(file + ": " + error.what());
        } catch (const DatabaseError& error) {
            if (error.is_busy()) {
                reads = false;
                writes = false;
                failure = error.what();
                return;
            }
            throw CacheError(file + ": " + (error.is_damage() ? "It is damaged" : error.what()));
        }
    }

    // Requires the lock of `using_database`.
    void fail(const DatabaseError& error) {
        writes = false;
        failure = failure ? failure : error.what();
    }

    std::optional<CachedAnswer> find(const std::string& words, const std::string& name,
                                     const FileIdentity& identity) {
        const std::lock_guard<std::mutex> lock(using_database);
        if (!reads) {
            return std::nullopt;
        }
        const StatementUse use(*lookup);
        try {
            add_key(*lookup, words, name, identity);
            return lookup->next() ? answer_in(*lookup) : std::nullopt;
        } catch (const DatabaseError& error) {
            if (!error.is_oversize()) {
                reads = false;
                fail(error);
            }
            return std::nullopt;
        }
    }

    // Nothing if the row is not one that this program writes.
    static std::optional<CachedAnswer> answer_in(const Statement& row) {
        const auto settled = row.number(0);
        const auto run = row.number(1);
        const auto day = row.number(2);
        const auto output = row.bytes(6);
        CachedAnswer answer;
        for (std::size_t i = 0; i < answer.counted.size(); ++i) {
            const auto number = row.number(3 + static_cast<int>(i));
            if (!number) {
                return std::nullopt;
            }
            answer.counted.at(i) = *number;
        }
        if (!settled || !run || !day || !output || output->size() > kLongestOutput) {
            return std::nullopt;
        }
        answer.output = *output;
        answer.is_settled = *settled == 1;
        answer.run = *run;
        answer.day = *day;
        return answer;
    }

    void store(const std::vector<Row>& rows) {
        const std::lock_guard<std::mutex> lock(using_database);
        if (!writes || rows.empty()) {
            return;
        }
        try {
            Transaction transaction(*database);
            Statement(*database, kAddOptions).with(options).run();
            Statement insertion(*database, kKeep);
            for (const Row& row : rows) {
                add_key(insertion, options, row.name, row.identity);
                insertion.with(row.answer.is_settled ? 1 : 0)
                    .with(row.answer.run)
                    .with(row.answer.day);
                for (const std::int64_t number : row.answer.counted) {
                    insertion.with(number);
                }
                insertion.with(row.answer.output).run();
            }
            transaction.commit();
        } catch (const DatabaseError& error) {
            fail(error);
        }
    }

    void forget() {
        const std::lock_guard<std::mutex> lock(using_database);
        if (!writes) {
            return;
        }
        const std::string old = " FROM files WHERE day < " +
                                std::to_string(today - kDaysUntilForgotten) + " LIMIT " +
                                std::to_string(kMaxForgotten);
        try {
            if (database->number("SELECT count(*) FROM (SELECT 1" + old + ")") == 0) {
                return;
            }
            Transaction transaction(*database);
            database->run("DELETE FROM files WHERE rowid IN (SELECT rowid" + old + ")");
            database->run(
                "DELETE FROM options WHERE NOT EXISTS"
                " (SELECT 1 FROM files WHERE files.options = options.id)");
            transaction.commit();
        } catch (const DatabaseError& error) {
            fail(error);
        }
    }

    const std::string options;
    const std::int64_t run = random_number();
    const std::int64_t today = days_since_1970();

    std::mutex using_database;  // guards the members up to `failure`
    std::optional<Database> database;
    std::optional<Statement> lookup;
    bool reads = true;
    bool writes = true;
    std::optional<std::string> failure;

    std::mutex adding;  // guards the members below
    std::vector<Row> waiting;
    std::size_t waiting_bytes = 0;
    Clock::time_point last_stored = Clock::now();
};

RunCache::RunCache(const std::string& file, std::string options)
    : state_(std::make_unique<State>(file, std::move(options))) {}

RunCache::~RunCache() {
    state_->store(state_->waiting);
}

std::optional<CachedAnswer> RunCache::find(const std::string& name, const FileIdentity& identity) {
    return state_->find(state_->options, name, identity);
}

std::optional<CachedAnswer> RunCache::find_of(const std::string& options, const std::string& name,
                                              const FileIdentity& identity) {
    return state_->find(options, name, identity);
}

void RunCache::keep(const std::string& name, const FileIdentity& identity, CachedAnswer answer) {
    if (answer.output.size() > kLongestOutput) {
        return;
    }
    std::vector<Row> rows;
    {
        const std::lock_guard<std::mutex> lock(state_->adding);
        state_->waiting_bytes += name.size() + answer.output.size();
        state_->waiting.push_back({name, identity, std::move(answer)});
        const Clock::time_point now = Clock::now();
        if (state_->waiting.size() < kMaxRows && state_->waiting_bytes < kMaxBytes &&
            now - state_->last_stored < kLongestWait) {
            return;
        }
        rows = std::exchange(state_->waiting, {});
        state_->waiting_bytes = 0;
        state_->last_stored = now;
    }
    state_->store(rows);
}

std::optional<std::string> RunCache::finish() {
    state_->store(std::exchange(state_->waiting, {}));
    state_->forget();
    return state_->failure;
}

std::int64_t RunCache::run() const {
    return state_->run;
}

std::int64_t RunCache::today() const {
    return state_->today;
}

}  // namespace brindle::host
