#include "linux/system/sqlite_parts_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace pedvar {

namespace {

/// A list's rows stand side by side, their places in one row of numbers with those of all other lists: appending
/// to the newest list, which is the one that grows, appends to the table.
std::int64_t placeOf(std::int64_t list, std::int32_t position) {
    constexpr std::int64_t placesOfList = std::int64_t{1} << 32;
    return list * placesOfList + position - std::numeric_limits<std::int32_t>::min();
}
std::int64_t firstPlace(std::int64_t list) {
    return placeOf(list, std::numeric_limits<std::int32_t>::min());
}
std::int64_t lastPlace(std::int64_t list) {
    return placeOf(list, std::numeric_limits<std::int32_t>::max());
}

/// 0 for a list that does not exist.
std::int64_t numberOf(Connection& connection, std::string_view list) {
    return connection.number("select number from lists where name = ? and number between 1 and 0x7fffffff", list);
}

/// Some texts of a list, at places that follow each other.
struct Row {
    std::int64_t lastPlace = 0;  // the key
    std::vector<std::string> texts;
    std::size_t padding = 0;  // spaces before the texts, room for more

    std::int64_t firstPlace() const { return lastPlace - static_cast<std::int64_t>(texts.size()) + 1; }
};

/// Each text with its length before it: "5:first6:second".
std::string content(const Row& row) {
    std::string content(row.padding, ' ');
    for (const std::string& text : row.texts) content += fmt::format("{}:{}", text.size(), text);
    return content;
}

/// What does not have this form is one text.
Row rowIn(const Rows& rows) {
    std::string_view rest = rows.text(1);
    Row row{.lastPlace = rows.integer(0), .padding = std::min(rest.find_first_not_of(' '), rest.size())};
    rest.remove_prefix(row.padding);
    while (!rest.empty()) {
        std::size_t length = 0;
        const char* digitsEnd = std::from_chars(rest.data(), rest.data() + rest.size(), length).ptr;
        const auto start = static_cast<std::size_t>(digitsEnd - rest.data()) + 1;
        const bool isWhole = start <= rest.size() && *digitsEnd == ':' && length <= rest.size() - start;
        row.texts.emplace_back(isWhole ? rest.substr(start, length) : rest);
        rest.remove_prefix(isWhole ? start + length : rest.size());
    }
    return row;
}

/// The first row of the list that ends at `place` or behind it.
std::optional<Row> rowAt(Connection& connection, std::int64_t list, std::int64_t place) {
    Rows rows =
        connection.query("select place, texts from parts where place between ? and ? order by place limit 1",
                         place, lastPlace(list));
    return rows.next() ? std::optional(rowIn(rows)) : std::nullopt;
}

void write(Connection& connection, const Row& row) {
    // Replacing would give a row of the same size other pages.
    connection.run("insert into parts values(?, ?) on conflict(place) do update set texts = excluded.texts",
                   row.lastPlace, std::string_view(content(row)));
}

void erase(Connection& connection, std::int64_t lastPlace) {
    connection.run("delete from parts where place = ?", lastPlace);
}

/// Small texts that are put before all others share a row, so that reading them all reads few pages, and pages
/// that lie side by side. Its size stays what it was at first: SQLite then writes only the pages that change.
void addInFront(Connection& connection, std::int64_t list, const std::string& text) {
    constexpr std::size_t sharedRowSize = 8192;  // bytes
    auto first = rowAt(connection, list, firstPlace(list));
    const std::size_t size = content({.texts = {text}}).size();
    if (first && first->padding >= size) {
        first->texts.insert(first->texts.begin(), text);
        first->padding -= size;
        return write(connection, *first);
    }
    const std::int64_t place = first ? first->firstPlace() - 1 : placeOf(list, 0);
    write(connection, {place, {text}, sharedRowSize - std::min(size, sharedRowSize)});
}

const Phrase& changedMeanwhile() {
    static const Phrase reason("another process has just changed the same");
    return reason;
}

/// Each yields why the change cannot be made.
class PartsChanger {
public:
    explicit PartsChanger(Connection& connection) : connection_(connection) {}

    std::optional<Phrase> operator()(const SetFrame& change) {
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

    std::optional<Phrase> operator()(const AddPart& change) {
        std::int64_t list = numberOf(connection_, change.list);
        if (list == 0) {
            connection_.run("insert into lists(name) values(?)", std::string_view(change.list));
            list = connection_.lastInsertedRow();
        }
        if (!change.position) {
            addInFront(connection_, list, change.text);
            return std::nullopt;
        }
        const std::int64_t place = placeOf(list, *change.position);
        const auto next = rowAt(connection_, list, place);
        if (next && next->firstPlace() <= place) return Phrase("a part of {} is there already", {change.list});
        write(connection_, {.lastPlace = place, .texts = {change.text}});
        return std::nullopt;
    }

    std::optional<Phrase> operator()(const ReplacePart& change) {
        const std::int64_t list = numberOf(connection_, change.list);
        const std::int64_t place = placeOf(list, change.position);
        auto row = rowAt(connection_, list, place);
        if (!row || place < row->firstPlace()) return changedMeanwhile();
        const auto text = row->texts.begin() + (place - row->firstPlace());
        if (*text != change.expected) return changedMeanwhile();
        if (change.replacement) {
            *text = *change.replacement;
            write(connection_, *row);
            return std::nullopt;
        }
        const Row before{.lastPlace = place - 1, .texts = {row->texts.begin(), text}};
        const Row behind{.lastPlace = row->lastPlace, .texts = {text + 1, row->texts.end()}};
        erase(connection_, row->lastPlace);
        if (!before.texts.empty()) write(connection_, before);
        if (!behind.texts.empty()) write(connection_, behind);
        return std::nullopt;
    }

    std::optional<Phrase> operator()(const RemoveList& change) {
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
    connection.run(fmt::format("create table {}.parts(place integer primary key, texts text not null)", schema));
}

std::optional<std::string> readFrame(Connection& connection, std::string_view key) {
    Rows rows = connection.query("select value from defaults where key = ? and type = ?", key, frameType);
    return rows.next() ? std::optional(std::string(rows.text(0))) : std::nullopt;
}

std::vector<Part> readList(Connection& connection, std::string_view name) {
    const std::int64_t list = numberOf(connection, name);
    Rows rows = connection.query("select place, texts from parts where place between ? and ? order by place",
                                 firstPlace(list), lastPlace(list));
    std::vector<Part> parts;
    while (rows.next()) {
        Row row = rowIn(rows);
        std::int64_t place = row.firstPlace();
        for (std::string& text : row.texts) {
            parts.push_back({static_cast<std::int32_t>(place++ - placeOf(list, 0)), std::move(text)});
        }
    }
    return parts;
}

std::optional<Phrase> changeParts(Connection& connection, const PartsChange& change) {
    return std::visit(PartsChanger(connection), change);
}

}  // namespace pedvar
