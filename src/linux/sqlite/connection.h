/// SQLite with owners, typed columns and failures that cannot be overlooked.
///
/// What goes wrong inside travels as `SqliteFailure`; adapters catch it at their edge and answer with a value.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace pedvar {

/// A call of SQLite's that did not succeed.
class SqliteFailure : public std::exception {
public:
    SqliteFailure(int code, std::string message) : code_(code), message_(std::move(message)) {}

    int code() const { return code_; }  // extended result code
    int primaryCode() const { return code_ & 0xff; }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    int code_;
    std::string message_;
};

/// The rows of a running statement. The statement is free for others again when this ends.
class Rows {
public:
    Rows(sqlite3* database, sqlite3_stmt* statement) : database_(database), statement_(statement) {}
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    ~Rows();

    /// Goes to the next row; false behind the last one.
    bool next();

    bool isNull(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    /// Valid until the next row.
    std::string_view text(int column) const;
    std::span<const std::byte> blob(int column) const;

private:
    sqlite3* database_;
    sqlite3_stmt* statement_;
};

/// One connection; used by one thread at a time. Statements are prepared once and kept.
class Connection {
public:
    enum class Access { read, readImmutable, write };

    /// `path` is a file that exists. With `readImmutable` nobody may write it meanwhile. Waits for other
    /// connections for as long as `patience`.
    Connection(const std::string& path, Access access, std::chrono::milliseconds patience);

    /// Runs `sql` with `arguments` in place of its question marks. A statement is not run again before its rows
    /// have ended. Arguments may be integers, doubles, texts, blobs, optionals of them and nullptr.
    template <class... Arguments>
    Rows query(std::string_view sql, const Arguments&... arguments) {
        sqlite3_stmt* statement = prepared(sql);
        int position = 0;
        (bind(statement, ++position, arguments), ...);
        return Rows(database_.get(), statement);
    }

    /// Runs `sql` to its end and yields how many rows it has inserted, changed or deleted.
    template <class... Arguments>
    std::int64_t run(std::string_view sql, const Arguments&... arguments) {
        query(sql, arguments...).next();
        return changes();
    }

    /// The one number that `sql` yields.
    template <class... Arguments>
    std::int64_t number(std::string_view sql, const Arguments&... arguments) {
        Rows rows = query(sql, arguments...);
        return rows.next() ? rows.integer(0) : 0;
    }

    /// Runs statements that have no arguments, once.
    void runScript(const char* sql);

    std::int64_t lastInsertedRow() const;
    bool isInTransaction() const;
    sqlite3* handle() const { return database_.get(); }

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    sqlite3_stmt* prepared(std::string_view sql);
    std::int64_t changes() const;

    void bind(sqlite3_stmt* statement, int position, std::int64_t value);
    void bind(sqlite3_stmt* statement, int position, std::int32_t value);
    void bind(sqlite3_stmt* statement, int position, double value);
    void bind(sqlite3_stmt* statement, int position, std::nullptr_t);
    /// Texts and blobs have to outlive the rows.
    void bind(sqlite3_stmt* statement, int position, std::string_view value);
    void bind(sqlite3_stmt* statement, int position, std::span<const std::byte> value);
    template <class T>
    void bind(sqlite3_stmt* statement, int position, const std::optional<T>& value) {
        if (value) return bind(statement, position, *value);
        bind(statement, position, nullptr);
    }

    std::unique_ptr<sqlite3, Close> database_;
    std::unordered_map<std::string_view, std::unique_ptr<sqlite3_stmt, Finalize>>
        statements_;  // by SQLite's own copy
};

/// A transaction that is undone unless it was committed.
class Transaction {
public:
    enum class Kind { read, write };

    Transaction(Connection& connection, Kind kind);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

private:
    Connection& connection_;
    bool isOpen_ = true;
};

}  // namespace pedvar
