#include "linux/system/sqlite_parts_format.h"

#include <fmt/format.h>

#include <cstdint>
#include <limits>

namespace pedvar {

namespace {

/// A list's texts stand side by side, their places in one row of numbers with those of all other lists: appending
/// to the newest list, which is the one that grows, appends to the table.
std::int64_t placeOf(std::int64_t listNumber, std::int32_t position) {
    constexpr std::int64_t placesOfList = std::int64_t{1} << 32;
    return listNumber * placesOfList + position - std::numeric_limits<std::int32_t>::min();
}
std::int64_t firstPlace(std::int64_t list) {
    return placeOf(list, std::numeric_limits<std::int32_t>::min());
}
std::int64_t lastPlace(std::int64_t list) {
    return placeOf(list, std::numeric_limits<std::int32_t>::max());
}

std::int32_t positionOf(std::int64_t listNumber, std::int64_t place) {
    return static_cast<std::int32_t>(place - placeOf(listNumber, 0));
}

/// 0 for a list that does not exist.
std::int64_t numberOf(Connection& connection, std::string_view list) {
    return connection.number("select number from lists where name = ? and number between 1 and 0x7fffffff", list);
}

/// The place before all texts of the list.
std::int64_t placeInFront(Connection& connection, std::int64_t list) {
    Rows rows = connection.query("select place from parts where place between ? and ? order by place limit 1",
                                 firstPlace(list), lastPlace(list));
    return rows.next() ? rows.integer(0) - 1 : placeOf(list, 0);
}

/// Each yields why the change cannot be made.
class PartsChanger {
public:
    explicit PartsChanger(Connection& connection) : connection_(connection) {}

    std::optional<std::string> operator()(const SetFrame& change) {
        if (change.frame) {
            connection_.run(
                "insert into defaults values(?, ?, ?) "
                "on conflict(key) do update set type = excluded.type, value = excluded.value",
                std::string_view(change.key), frameType, std::string_view(*change.frame));
        } else {
            connection_.run("delete from defaults where key = ?", std::string_view(change.key));
        }
        return std::nullopt;
    }

    std::optional<std::string> operator()(const AddPart& change) {
        std::int64_t list = numberOf(connection_, change.list);
        if (list == 0) {
            connection_.run("insert into lists(name) values(?)", std::string_view(change.list));
            list = connection_.lastInsertedRow();
        }
        const std::int64_t place =
            change.position ? placeOf(list, *change.position) : placeInFront(connection_, list);
        const bool isAdded =
            connection_.run("insert or ignore into parts values(?, ?)", place, std::string_view(change.text)) == 1;
        return isAdded ? std::nullopt : std::optional(fmt::format("a part of {} is there already", change.list));
    }

    std::optional<std::string> operator()(const ReplacePart& change) {
        const std::int64_t place = placeOf(numberOf(connection_, change.list), change.position);
        const std::string_view expected = change.expected;
        const bool isReplaced =
            change.replacement
                ? connection_.run("update parts set text = ? where place = ? and text = ?",
                                  std::string_view(*change.replacement), place, expected) == 1
                : connection_.run("delete from parts where place = ? and text = ?", place, expected) == 1;
        return isReplaced ? std::nullopt : std::optional<std::string>("another process has just changed the same");
    }

    std::optional<std::string> operator()(const RemoveList& change) {
        const std::int64_t list = numberOf(connection_, change.list);
        connection_.run("delete from parts where place between ? and ?", firstPlace(list), lastPlace(list));
        connection_.run("delete from lists where number = ?", list);
        return std::nullopt;
    }

private:
    Connection& connection_;
};

}  // namespace

void createPartsTables(Connection& connection, std::string_view schema) {
    connection.run(
        fmt::format("create table {}.lists(number integer primary key, name text not null unique)", schema));
    connection.run(fmt::format("create table {}.parts(place integer primary key, text text not null)", schema));
}

std::optional<std::string> readFrame(Connection& connection, std::string_view key) {
    Rows rows = connection.query("select value from defaults where key = ? and type = ?", key, frameType);
    return rows.next() ? std::optional(std::string(rows.text(0))) : std::nullopt;
}

std::vector<Part> readList(Connection& connection, std::string_view name) {
    const std::int64_t list = numberOf(connection, name);
    Rows rows = connection.query("select place, text from parts where place between ? and ? order by place",
                                 firstPlace(list), lastPlace(list));
    std::vector<Part> parts;
    while (rows.next()) parts.push_back({positionOf(list, rows.integer(0)), std::string(rows.text(1))});
    return parts;
}

std::optional<std::string> changeParts(Connection& connection, const PartsChange& change) {
    return std::visit(PartsChanger(connection), change);
}

}  // namespace pedvar
