#include "linux/health/batch_table.h"

#include "linux/sqlite/connection.h"

#include <sqlite3.h>

#include <cmath>

namespace pedvar {
namespace {

// SQLite knows tables and cursors by their first members, and owns them between open and close.
struct Table {
    sqlite3_vtab base{};
    const std::span<const SampleRow>* rows = nullptr;
};
struct Cursor {
    sqlite3_vtab_cursor base{};
    std::span<const SampleRow> rows;
    std::size_t position = 0;
};

Cursor& cursorOf(sqlite3_vtab_cursor* base) {
    return *reinterpret_cast<Cursor*>(base);
}

int connectTable(sqlite3* database, void* rows, int, const char* const*, sqlite3_vtab** table, char**) {
    const int result =
        sqlite3_declare_vtab(database, "CREATE TABLE batch (series, start, duration, source, value)");
    if (result == SQLITE_OK) *table = &(new Table{.rows = static_cast<std::span<const SampleRow>*>(rows)})->base;
    return result;
}

int disconnectTable(sqlite3_vtab* table) {
    delete reinterpret_cast<Table*>(table);
    return SQLITE_OK;
}

int planScan(sqlite3_vtab*, sqlite3_index_info*) {
    return SQLITE_OK;
}

int openCursor(sqlite3_vtab*, sqlite3_vtab_cursor** cursor) {
    *cursor = &(new Cursor)->base;
    return SQLITE_OK;
}

int closeCursor(sqlite3_vtab_cursor* cursor) {
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int startScan(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**) {
    cursorOf(cursor).rows = *reinterpret_cast<Table*>(cursor->pVtab)->rows;
    cursorOf(cursor).position = 0;
    return SQLITE_OK;
}

int goToNext(sqlite3_vtab_cursor* cursor) {
    ++cursorOf(cursor).position;
    return SQLITE_OK;
}

int isAtEnd(sqlite3_vtab_cursor* cursor) {
    return cursorOf(cursor).position == cursorOf(cursor).rows.size() ? 1 : 0;
}

/// Whole numbers are kept as integers, which take a byte or two instead of eight.
void yieldValue(sqlite3_context* context, double value) {
    constexpr double exact = 9007199254740992;  // 2^53
    if (std::abs(value) <= exact && value == std::trunc(value)) {
        sqlite3_result_int64(context, static_cast<sqlite3_int64>(value));
    } else {
        sqlite3_result_double(context, value);
    }
}

int yieldColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
    const SampleRow& row = cursorOf(cursor).rows[cursorOf(cursor).position];
    switch (column) {
        case 0:
            sqlite3_result_int(context, row.series);
            break;
        case 1:
            sqlite3_result_int64(context, row.start);
            break;
        case 2:
            sqlite3_result_int64(context, row.duration);
            break;
        case 3:
            sqlite3_result_int(context, row.source);
            break;
        default:
            yieldValue(context, row.value);
    }
    return SQLITE_OK;
}

int yieldRowNumber(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
    *number = static_cast<sqlite3_int64>(cursorOf(cursor).position);
    return SQLITE_OK;
}

/// A table that is there without being created, and cannot be written.
constexpr sqlite3_module readOnlyModule() {
    sqlite3_module module{};
    module.xConnect = connectTable;
    module.xBestIndex = planScan;
    module.xDisconnect = disconnectTable;
    module.xOpen = openCursor;
    module.xClose = closeCursor;
    module.xFilter = startScan;
    module.xNext = goToNext;
    module.xEof = isAtEnd;
    module.xColumn = yieldColumn;
    module.xRowid = yieldRowNumber;
    return module;
}

constexpr sqlite3_module module = readOnlyModule();

}  // namespace

BatchTable::BatchTable(Connection& connection) {
    if (sqlite3_create_module_v2(connection.handle(), "batch", &module, &rows_, nullptr) != SQLITE_OK) {
        throw SqliteFailure(sqlite3_extended_errcode(connection.handle()), sqlite3_errmsg(connection.handle()));
    }
}

}  // namespace pedvar
