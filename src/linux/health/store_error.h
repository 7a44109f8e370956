/// Why the health store does not do what it was asked.
#pragma once

#include "linux/sqlite/connection.h"
#include "platform/phrase.h"

#include <expected>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace pedvar {

struct StoreError {
    enum class Kind {
        notAStore,      // the file is something else
        newerVersion,   // written by a newer Pedvar
        damaged,        // SQLite says so
        unwritable,     // read-only file, folder or file system, or no permission
        full,           // no space left
        busy,           // another process kept writing for too long
        unknownSource,  // no source of that name, or several
        other,
    };
    Kind kind = Kind::other;
    Phrase message;      // what is wrong, where, what to do
    int sqliteCode = 0;  // SQLite's extended result code; 0 when the failure is not SQLite's
};

template <class T = void>
using StoreResult = std::expected<T, StoreError>;

/// What a failure of SQLite on the store at `path` means to the person.
StoreError storeError(const SqliteFailure& failure, std::string_view path);

namespace detail {

template <class T>
struct ResultOf {
    using Type = StoreResult<T>;
};
template <class T>
struct ResultOf<StoreResult<T>> {
    using Type = StoreResult<T>;
};

}  // namespace detail

/// The outcome of `action` on the store at `path`: the edge at which failures of SQLite become values.
template <class Action>
auto attempt(std::string_view path, Action&& action) -> detail::ResultOf<std::invoke_result_t<Action>>::Type {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Action>>) {
            action();
            return {};
        } else {
            return action();
        }
    } catch (const SqliteFailure& failure) {
        return std::unexpected(storeError(failure, path));
    }
}

}  // namespace pedvar
