/// What can go wrong with a command.
#pragma once

#include "apps/cli/texts.h"
#include "core/json_value.h"
#include "linux/health/store_error.h"
#include "linux/import/import_error.h"
#include "platform/user_defaults.h"
#include "routes/gpx_error.h"

#include <expected>
#include <string>
#include <type_traits>
#include <utility>

namespace pedvar {

/// The kinds that `--json` names; scripts switch on them, so a name never changes.
enum class ErrorKind {
    usage,              // the command line or a value in it
    fileNotFound,       // a file to read is not there
    unreadable,         // a file to read is there, but cannot be read
    notAnExport,        // a file to import is something else
    invalidFormat,      // a file to read is no GPX
    noTrackPoints,      // a GPX file without points
    noTimes,            // a GPX file to import without times
    unknownActivity,    // no activity has such an identifier
    ambiguousActivity,  // several have
    notChangeable,      // an activity of the health store, which is kept as it was imported
    noRoute,            // an activity has no route to write, or nothing is left of it
    fileExists,         // a file to write is there already
    truncated,          // a file to import ends too early; what was readable is stored
    interrupted,        // stopped by the person; running the command again completes it
    notAStore,          // a file of the data folder is something else
    newerVersion,       // the data folder was written by a newer Pedvar
    damaged,            // stored data is damaged
    unwritable,         // a file, folder or file system cannot be written
    full,               // no space left
    busy,               // another process kept writing for too long
    noAddress,          // the settings have no address of what was asked for
    checkFailed,        // who knows the newest version could not be asked, or did not say
    noUpdate,           // no update is known
    noBrowser,          // nothing opens a page
    alreadyRecording,   // another process records
    otherRecording,     // a recording of another kind is not finished
    alreadyWatching,    // another process watches
    nothingRecorded,    // there is no recording to finish
    unsound,            // the doctor found something; the document tells what
    failed,             // anything else
};

/// `message` is for people: what is wrong, where, and what to do.
struct CommandError {
    ErrorKind kind = ErrorKind::failed;
    Phrase message;
};

template <class T>
using CommandResult = std::expected<T, CommandError>;

inline std::unexpected<CommandError> usageError(Phrase message) {
    return std::unexpected(CommandError{ErrorKind::usage, std::move(message)});
}

/// With members "kind" and "message".
JsonValue errorDocument(const CommandError& error, const Texts& text);

CommandError errorOf(const StoreError& error);
CommandError errorOf(const DefaultsError& error);
CommandError errorOf(const ImportError& error);
/// `file` names where the document is.
CommandError errorOf(const GPXFailure& failure, const std::string& file);

/// The value, or the adapter's error as the command's.
template <class T, class Error>
CommandResult<T> commandResult(std::expected<T, Error> result) {
    if (!result) return std::unexpected(errorOf(result.error()));
    if constexpr (std::is_void_v<T>) {
        return {};
    } else {
        return std::move(*result);
    }
}

enum class ExitCode { done = 0, failed = 1, wrongUsage = 2 };

inline ExitCode exitCodeOf(const CommandError& error) {
    return error.kind == ErrorKind::usage ? ExitCode::wrongUsage : ExitCode::failed;
}

}  // namespace pedvar
