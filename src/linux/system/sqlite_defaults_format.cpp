#include "linux/system/sqlite_defaults_format.h"

#include "linux/system/sqlite_parts_format.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <limits>
#include <span>

namespace pedvar {

namespace {

/// Kept in each file as its `user_version`; 0 in a file that holds nothing yet.
constexpr std::int64_t formatVersion = 1;

/// SQLite keeps every double bit for bit but NaN, which becomes null.
double realOrNaN(const Rows& rows, int column) {
    return rows.isNull(column) ? std::numeric_limits<double>::quiet_NaN() : rows.real(column);
}

/// The value behind the name of its type in column `column`; none for documents in parts.
std::optional<DefaultsValue> valueIn(const Rows& rows, int column) {
    const std::string_view type = rows.text(column++);
    if (type == "bool") return rows.integer(column) != 0;
    if (type == "integer") return rows.integer(column);
    if (type == "double") return realOrNaN(rows, column);
    if (type == "text") return std::string(rows.text(column));
    if (type == "date") return Date{Seconds{realOrNaN(rows, column)}};
    if (type == "data") return Data{std::string(rows.text(column))};
    return std::nullopt;
}

/// Puts a value and the name of its type beside the key.
class ValueWriter {
public:
    ValueWriter(Connection& connection, std::string_view schema, std::string_view key)
        : connection_(connection),
          statement_(fmt::format("insert or replace into {}.defaults values(?, ?, ?)", schema)),
          key_(key) {}

    void operator()(bool value) { put("bool", std::int64_t{value}); }
    void operator()(std::int64_t value) { put("integer", value); }
    void operator()(double value) { put("double", value); }
    void operator()(const std::string& value) { put("text", std::string_view(value)); }
    void operator()(Date value) { put("date", value.time_since_epoch().count()); }
    void operator()(const Data& value) { put("data", std::as_bytes(std::span(value.bytes))); }

private:
    template <class Value>
    void put(std::string_view type, Value value) {
        connection_.run(statement_, key_, type, value);
    }

    Connection& connection_;
    std::string statement_;
    std::string_view key_;
};

}  // namespace

std::expected<bool, DefaultsError> holdsDefaults(Connection& connection, std::string_view schema) {
    const std::int64_t version = connection.number(fmt::format("pragma {}.user_version", schema));
    if (version == formatVersion) return true;
    if (version > formatVersion) {
        return std::unexpected(
            DefaultsError{Phrase("it was written by a newer Pedvar"), DefaultsError::Kind::newerVersion});
    }
    if (connection.number(fmt::format("select count(*) from {}.sqlite_schema", schema)) == 0) return false;
    return std::unexpected(
        DefaultsError{Phrase("it is a database of something else"), DefaultsError::Kind::notAStore});
}

void createDefaultsTables(Connection& connection, std::string_view schema) {
    connection.run(
        fmt::format("create table {}.defaults(key text primary key, type text not null, value)", schema));
    createPartsTables(connection, schema);
    connection.run(fmt::format("pragma {}.user_version = {}", schema, formatVersion));
}

std::optional<DefaultsValue> readDefault(Connection& connection, std::string_view key) {
    Rows rows = connection.query("select type, value from defaults where key = ?", key);
    if (!rows.next()) return std::nullopt;
    if (auto value = valueIn(rows, 0)) return value;
    if (rows.text(0) != frameType) return std::nullopt;
    const auto list = [&](std::string_view name) { return readList(connection, name); };
    return Data{wholeDocument(rows.text(1), list)};
}

DefaultsSnapshot::Values readDefaults(Connection& connection) {
    DefaultsSnapshot::Values values;
    Rows rows = connection.query("select key, type, value from defaults");
    while (rows.next()) {
        if (auto value = valueIn(rows, 1)) values.emplace(rows.text(0), std::move(*value));
    }
    return values;
}

std::vector<std::string> readKeysSetAside(Connection& connection) {
    std::vector<std::string> keys;
    Rows rows = connection.query(
        "select key from defaults where key glob '*.unreadable*' or key glob '*.setAside' order by key");
    while (rows.next()) keys.emplace_back(rows.text(0));
    return keys;
}

void writeDefault(Connection& connection, std::string_view schema, std::string_view key,
                  const std::optional<DefaultsValue>& value) {
    if (value) return std::visit(ValueWriter(connection, schema, key), *value);
    connection.run(fmt::format("delete from {}.defaults where key = ?", schema), key);
}

DefaultsError reasonOf(const SqliteFailure& failure) {
    using enum DefaultsError::Kind;
    switch (failure.primaryCode()) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return {Phrase("another process keeps writing there"), busy};
        case SQLITE_FULL:
            return {Phrase("there is no space left on the disk"), full};
        case SQLITE_READONLY:
        case SQLITE_PERM:
            return {Phrase("the file or its folder is read-only"), unwritable};
        case SQLITE_CANTOPEN:
            return {Phrase("the file or one beside it cannot be opened"), unwritable};
        case SQLITE_NOTADB:
            return {Phrase("the file is not a database"), notAStore};
        case SQLITE_CORRUPT:
            return {Phrase("the file is damaged"), damaged};
        default:
            return {std::string(failure.what()), unwritable};
    }
}

}  // namespace pedvar
