#include "linux/health/store_error.h"

#include "linux/sqlite/connection.h"

#include <fmt/format.h>
#include <sqlite3.h>

namespace pedvar {

StoreError storeError(const SqliteFailure& failure, std::string_view path) {
    using enum StoreError::Kind;
    const auto error = [&](StoreError::Kind kind, std::string message) {
        return StoreError{kind, std::move(message), failure.code()};
    };
    switch (failure.primaryCode()) {
        case SQLITE_NOTADB:
            return error(notAStore,
                         fmt::format("{} is not a health store of Pedvar. Move it away, or choose another "
                                     "data folder with --data.",
                                     path));
        case SQLITE_CORRUPT:
            return error(damaged,
                         fmt::format("The health store {} is damaged ({}). Restore a copy of it, or move it "
                                     "away and import again.",
                                     path, failure.what()));
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_CANTOPEN:
            return error(unwritable, fmt::format("The health store {} cannot be opened or written ({}). Check the "
                                                 "permissions of the file and its folder.",
                                                 path, failure.what()));
        case SQLITE_FULL:
            return error(full,
                         fmt::format("There is no space left for the health store {}. Nothing was lost; make "
                                     "room and try again.",
                                     path));
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return error(busy,
                         fmt::format("Another process keeps writing to the health store {}. Try again when it "
                                     "has finished.",
                                     path));
        default:
            return error(other, fmt::format("The health store {} failed: {}.", path, failure.what()));
    }
}

}  // namespace pedvar
