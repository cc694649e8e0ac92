// SQLite, with errors as exceptions.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace brindle::host {

class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int code, const std::string& text) : std::runtime_error(text), code_(code) {}

    // Another program has locked it for longer than the time-out.
    [[nodiscard]] bool is_busy() const;
    // Not a database, or damaged.
    [[nodiscard]] bool is_damage() const;
    // A value is larger than Database::kLongestValue.
    [[nodiscard]] bool is_oversize() const;

private:
    int code_;
};

// One connection, for one thread at a time. Everything raises DatabaseError.
class Database {
public:
    static constexpr int kLongestValue = 2 * 1024 * 1024;

    // Opens the file with this absolute path, which must not contain symbolic links; an empty file
    // is an empty database. The schema of the file can run as little code as SQLite permits.
    explicit Database(const std::string& path);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    void run(const std::string& sql) const;
    // The first value of the first row; 0 and "" where there is none or it is of another type.
    [[nodiscard]] std::int64_t number(const std::string& sql) const;
    [[nodiscard]] std::string text(const std::string& sql) const;

private:
    friend class Statement;
    sqlite3* connection_ = nullptr;
};

class Statement {
public:
    Statement(const Database& database, std::string_view sql);
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement();

    // Values for the parameters, from the first on. Bytes must live until the statement is reset.
    Statement& with(std::int64_t value);
    Statement& with(std::string_view bytes);
    // Whether there is another row.
    [[nodiscard]] bool next();
    // Runs to the end, and is ready for the next values.
    void run();
    void reset();

    // Nothing where the row has a value of another type.
    [[nodiscard]] std::optional<std::int64_t> number(int column) const;
    // Valid until the next call.
    [[nodiscard]] std::optional<std::string_view> bytes(int column) const;

private:
    void require(int code) const;

    sqlite3* connection_;
    sqlite3_stmt* statement_ = nullptr;
    int parameter_ = 0;
};

// Resets a statement at the end of a block: as long as it has a row, the database is locked.
class StatementUse {
public:
    explicit StatementUse(Statement& statement) : statement_(statement) {}
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    ~StatementUse() { statement_.reset(); }

private:
    Statement& statement_;
};

// The destructor rolls back what is not committed.
class Transaction {
public:
    explicit Transaction(const Database& database);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

private:
    const Database& database_;
    bool is_open_ = true;
};

}  // namespace brindle::host
