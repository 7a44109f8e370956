#include "linux/health/store_error.h"

#include "linux/sqlite/connection.h"

#include <sqlite3.h>

namespace pedvar {

StoreError storeError(const SqliteFailure& failure, std::string_view path) {
    using enum StoreError::Kind;
    const auto error = [&](StoreError::Kind kind, Phrase message) {
        return StoreError{kind, std::move(message), failure.code()};
    };
    // Reading takes some space as well, for what processes share.
    const bool lacksSharedSpace = failure.code() == SQLITE_IOERR_SHMSIZE;
    switch (lacksSharedSpace ? SQLITE_FULL : failure.primaryCode()) {
        case SQLITE_NOTADB:
            return error(notAStore, Phrase("{} is not a health store of Pedvar. Move it away, or choose another "
                                           "data folder with --data.",
                                           {std::string(path)}));
        case SQLITE_CORRUPT:
            return error(damaged, Phrase("The health store {} is damaged ({}). Restore a copy of it, or move it "
                                         "away and import again.",
                                         {std::string(path), std::string(failure.what())}));
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_CANTOPEN:
            return error(unwritable, Phrase("The health store {} cannot be opened or written ({}). Check the "
                                            "permissions of the file and its folder.",
                                            {std::string(path), std::string(failure.what())}));
        case SQLITE_FULL:
            return error(full, Phrase("There is no space left for the health store {}. Nothing was lost; make "
                                      "room and try again.",
                                      {std::string(path)}));
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return error(busy, Phrase("Another process keeps writing to the health store {}. Try again when it "
                                      "has finished.",
                                      {std::string(path)}));
        default:
            return error(other, Phrase("The health store {} failed: {}.",
                                       {std::string(path), std::string(failure.what())}));
    }
}

}  // namespace pedvar
