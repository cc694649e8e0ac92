#include "cache/cache_schema.h"

#include <array>
#include <string>

#include "cache/cache_error.h"
#include "cache/cache_file.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kVersion = 1;

// In the order of their names. "files" has a row for each file, name and set of options; volume to
// changed_nanoseconds are a FileIdentity, the rest is a CachedAnswer.
constexpr std::array<const char*, 3> kTables{
    "CREATE TABLE files(options INTEGER NOT NULL, volume INTEGER NOT NULL,"
    " number INTEGER NOT NULL, name BLOB NOT NULL, size INTEGER, modified INTEGER,"
    " modified_nanoseconds INTEGER, changed INTEGER, changed_nanoseconds INTEGER,"
    " settled INTEGER, run INTEGER, day INTEGER, counted_1 INTEGER, counted_2 INTEGER,"
    " counted_3 INTEGER, output BLOB, UNIQUE(options, volume, number, name))",
    "CREATE INDEX files_by_day ON files(day)",
    "CREATE TABLE options(id INTEGER PRIMARY KEY, text BLOB NOT NULL UNIQUE)",
};

std::string schema_in(const Database& database) {
    return database.text(
        "SELECT group_concat(sql, ';') FROM"
        " (SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY name)");
}

std::string our_schema() {
    std::string schema;
    for (const char* const table : kTables) {
        schema += (schema.empty() ? "" : ";") + std::string(table);
    }
    return schema;
}

std::int64_t application_id(const Database& database) {
    return database.number("PRAGMA application_id");
}

void fill_if_empty(const Database& database) {
    Transaction transaction(database);
    // Two runs may begin with one empty file.
    if (application_id(database) == kApplicationId) {
        return;
    }
    if (application_id(database) != 0 || !schema_in(database).empty()) {
        throw CacheError("It is no cache of brindle");
    }
    database.run("PRAGMA application_id = " + std::to_string(kApplicationId));
    database.run("PRAGMA user_version = " + std::to_string(kVersion));
    database.run(our_schema());
    transaction.commit();
}

}  // namespace

void prepare_cache_schema(const Database& database) {
    if (application_id(database) != kApplicationId) {
        fill_if_empty(database);
    }
    const std::int64_t version = database.number("PRAGMA user_version");
    if (version > kVersion) {
        throw CacheError("It was made by a newer version of brindle");
    }
    // Tables with triggers, or views of the same names, would run what somebody else has written.
    if (version != kVersion || schema_in(database) != our_schema()) {
        throw CacheError("It has other tables than a cache of brindle");
    }
    if (database.text("PRAGMA quick_check(1)") != "ok") {
        throw CacheError("It is damaged");
    }
}

}  // namespace brindle::host
