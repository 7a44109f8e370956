#include "linux/sqlite/connection.h"

#include "core/check.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <utility>

namespace pedvar {
namespace {

[[noreturn]] void fail(sqlite3* database) {
    throw SqliteFailure(sqlite3_extended_errcode(database), sqlite3_errmsg(database));
}

void require(sqlite3* database, int result) {
    if (result != SQLITE_OK) fail(database);
}

/// The path as a URI, so that nothing in it is taken for a parameter.
std::string uri(const std::string& path) {
    constexpr std::array special{'%', '?', '#'};
    std::string text = path.starts_with('/') ? "file://" : "file:";
    for (const char character : path) {
        const bool isPlain = std::ranges::find(special, character) == special.end();
        text += isPlain ? std::string(1, character) : fmt::format("%{:02X}", static_cast<unsigned>(character));
    }
    return text + "?immutable=1";
}

}  // namespace

Rows::~Rows() {
    sqlite3_reset(statement_);
}

bool Rows::next() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) fail(database_);
    return result == SQLITE_ROW;
}

bool Rows::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Rows::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

double Rows::real(int column) const {
    return sqlite3_column_double(statement_, column);
}

std::string_view Rows::text(int column) const {
    const std::span<const std::byte> bytes = blob(column);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::span<const std::byte> Rows::blob(int column) const {
    const auto* bytes = static_cast<const std::byte*>(sqlite3_column_blob(statement_, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

void Connection::Close::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

void Connection::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Connection::Connection(const std::string& path, Access access, std::chrono::milliseconds patience) {
    const int access_flags = access == Access::write ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
    const std::string name = access == Access::readImmutable ? uri(path) : path;
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(
        name.c_str(), &database,
        access_flags | SQLITE_OPEN_NOMUTEX | (access == Access::readImmutable ? SQLITE_OPEN_URI : 0), nullptr);
    database_.reset(database);
    require(database, result);
    sqlite3_extended_result_codes(database, 1);
    sqlite3_busy_timeout(database, static_cast<int>(patience.count()));
}

void Connection::runScript(const char* sql) {
    if (sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(handle());
}

std::int64_t Connection::lastInsertedRow() const {
    return sqlite3_last_insert_rowid(handle());
}

bool Connection::isInTransaction() const {
    return sqlite3_get_autocommit(handle()) == 0;
}

std::int64_t Connection::changes() const {
    return sqlite3_changes64(handle());
}

sqlite3_stmt* Connection::prepared(std::string_view sql) {
    if (const auto known = statements_.find(sql); known != statements_.end()) {
        check(!sqlite3_stmt_busy(known->second.get()), "a statement was run again before its rows had ended");
        return known->second.get();
    }
    sqlite3_stmt* statement = nullptr;
    require(handle(), sqlite3_prepare_v3(handle(), sql.data(), static_cast<int>(sql.size()),
                                         SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    std::unique_ptr<sqlite3_stmt, Finalize> owner(statement);
    statements_.emplace(sqlite3_sql(statement), std::move(owner));
    return statement;
}

void Connection::bind(sqlite3_stmt* statement, int position, std::int64_t value) {
    require(handle(), sqlite3_bind_int64(statement, position, value));
}

void Connection::bind(sqlite3_stmt* statement, int position, std::int32_t value) {
    require(handle(), sqlite3_bind_int(statement, position, value));
}

void Connection::bind(sqlite3_stmt* statement, int position, double value) {
    require(handle(), sqlite3_bind_double(statement, position, value));
}

void Connection::bind(sqlite3_stmt* statement, int position, std::nullptr_t) {
    require(handle(), sqlite3_bind_null(statement, position));
}

void Connection::bind(sqlite3_stmt* statement, int position, std::string_view value) {
    // A text without bytes is still a text, and not NULL.
    require(handle(), sqlite3_bind_text64(statement, position, value.empty() ? "" : value.data(), value.size(),
                                          SQLITE_STATIC, SQLITE_UTF8));
}

void Connection::bind(sqlite3_stmt* statement, int position, std::span<const std::byte> value) {
    require(handle(),
            sqlite3_bind_blob64(statement, position, value.empty() ? "" : static_cast<const void*>(value.data()),
                                value.size(), SQLITE_STATIC));
}

Transaction::Transaction(Connection& connection, Kind kind) : connection_(connection) {
    connection_.run(kind == Kind::write ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
    // SQLite ends some failed transactions by itself.
    if (isOpen_ && connection_.isInTransaction()) {
        sqlite3_exec(connection_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit() {
    connection_.run("COMMIT");
    isOpen_ = false;
}

}  // namespace pedvar
