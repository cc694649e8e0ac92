#include "cache/database.h"

#include <sqlite3.h>

namespace brindle::host {

namespace {

constexpr int kBusyMilliseconds = 5'000;

int primary(int code) {
    constexpr unsigned kPrimary = 0xFF;
    return static_cast<int>(static_cast<unsigned>(code) & kPrimary);
}

[[noreturn]] void raise(sqlite3* connection, int code) {
    throw DatabaseError(code, sqlite3_errmsg(connection));
}

// Nothing in the file's schema is trusted: it runs no function and writes no schema.
void restrict(sqlite3* connection) {
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, Database::kLongestValue);
    sqlite3_busy_timeout(connection, kBusyMilliseconds);
}

}  // namespace

bool DatabaseError::is_busy() const {
    return primary(code_) == SQLITE_BUSY;
}

bool DatabaseError::is_damage() const {
    return primary(code_) == SQLITE_CORRUPT || primary(code_) == SQLITE_NOTADB;
}

bool DatabaseError::is_oversize() const {
    return primary(code_) == SQLITE_TOOBIG;
}

Database::Database(const std::string& path) {
    const unsigned flags = static_cast<unsigned>(SQLITE_OPEN_READWRITE) |
                           static_cast<unsigned>(SQLITE_OPEN_NOMUTEX) |
                           static_cast<unsigned>(SQLITE_OPEN_NOFOLLOW) |
                           static_cast<unsigned>(SQLITE_OPEN_PRIVATECACHE);
    const int code = sqlite3_open_v2(path.c_str(), &connection_, static_cast<int>(flags), nullptr);
    if (code != SQLITE_OK) {
        // The connection has the text of the error.
        const std::string text =
            connection_ != nullptr ? sqlite3_errmsg(connection_) : sqlite3_errstr(code);
        sqlite3_close_v2(connection_);
        throw DatabaseError(code, text);
    }
    restrict(connection_);
}

Database::~Database() {
    sqlite3_close_v2(connection_);
}

void Database::run(const std::string& sql) const {
    const int code = sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        raise(connection_, code);
    }
}

std::int64_t Database::number(const std::string& sql) const {
    Statement statement(*this, sql);
    return statement.next() ? statement.number(0).value_or(0) : 0;
}

std::string Database::text(const std::string& sql) const {
    Statement statement(*this, sql);
    return statement.next() ? std::string(statement.bytes(0).value_or("")) : std::string();
}

Statement::Statement(const Database& database, std::string_view sql)
    : connection_(database.connection_) {
    require(sqlite3_prepare_v2(connection_, sql.data(), static_cast<int>(sql.size()), &statement_,
                               nullptr));
}

Statement::~Statement() {
    sqlite3_finalize(statement_);
}

void Statement::require(int code) const {
    if (code != SQLITE_OK) {
        raise(connection_, code);
    }
}

Statement& Statement::with(std::int64_t value) {
    require(sqlite3_bind_int64(statement_, ++parameter_, value));
    return *this;
}

Statement& Statement::with(std::string_view bytes) {
    require(
        sqlite3_bind_blob64(statement_, ++parameter_, bytes.data(), bytes.size(), SQLITE_STATIC));
    return *this;
}

bool Statement::next() {
    const int code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        raise(connection_, code);
    }
    return code == SQLITE_ROW;
}

void Statement::run() {
    while (next()) {
    }
    reset();
}

void Statement::reset() {
    sqlite3_reset(statement_);
    parameter_ = 0;
}

std::optional<std::int64_t> Statement::number(int column) const {
    if (sqlite3_column_type(statement_, column) != SQLITE_INTEGER) {
        return std::nullopt;
    }
    return sqlite3_column_int64(statement_, column);
}

std::optional<std::string_view> Statement::bytes(int column) const {
    const int type = sqlite3_column_type(statement_, column);
    if (type != SQLITE_BLOB && type != SQLITE_TEXT) {
        return std::nullopt;
    }
    const auto* const data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return data != nullptr ? std::string_view(data, size) : std::string_view();
}

Transaction::Transaction(const Database& database) : database_(database) {
    database_.run("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (is_open_) {
        try {
            database_.run("ROLLBACK");
        } catch (const DatabaseError&) {
            // SQLite has rolled it back itself.
            return;
        }
    }
}

void Transaction::commit() {
    database_.run("COMMIT");
    is_open_ = false;
}

}  // namespace brindle::host
