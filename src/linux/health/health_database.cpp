#include "linux/health/health_database.h"

#include "linux/system/private_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

namespace pedvar {
namespace {

constexpr std::int64_t applicationId = 0x50647672;  // "Pdvr"
constexpr std::int64_t schemaVersion = 2;

/// Moments and durations are in milliseconds, moments since 2001-01-01 UTC. A sample's whole content is its key,
/// so that a second copy of it cannot be.
///
/// A day of a series has a row in `totals` from its first sample on. Its `sums` are right, or NULL while they are
/// stale; a day without a row has no samples. `changed_days` has those whose sums are no longer what others may
/// have made of them; what is in `derived` was made of sums before `until`, and goes when one of them changes.
/// `state` counts the changes of a series.
///
/// `import` is the number of the import that has added a row, which takes a byte or two a sample.
constexpr const char* schema = R"(
    CREATE TABLE series (
        id INTEGER PRIMARY KEY,
        identifier TEXT NOT NULL,
        unit TEXT NOT NULL,
        longest INTEGER NOT NULL DEFAULT 0,
        state INTEGER NOT NULL DEFAULT 0,
        UNIQUE (identifier, unit));
    CREATE TABLE sources (
        id INTEGER PRIMARY KEY,
        kind TEXT NOT NULL,
        name TEXT NOT NULL,
        hardware TEXT NOT NULL,
        position INTEGER NOT NULL,
        import INTEGER,
        UNIQUE (kind, name, hardware));
    CREATE TABLE samples (
        series INTEGER, start INTEGER, duration INTEGER, source INTEGER, value, import INTEGER,
        PRIMARY KEY (series, start, duration, source, value)) WITHOUT ROWID;
    CREATE INDEX long_samples ON samples (series, start) WHERE duration > 14400000;
    CREATE TABLE totals (
        series INTEGER, day INTEGER, longest INTEGER, sums BLOB,
        PRIMARY KEY (series, day)) WITHOUT ROWID;
    CREATE INDEX stale_totals ON totals (series, day) WHERE sums IS NULL;
    CREATE TABLE changed_days (series INTEGER, day INTEGER, PRIMARY KEY (series, day)) WITHOUT ROWID;
    CREATE TABLE derived (key TEXT PRIMARY KEY, type TEXT NOT NULL, until INTEGER NOT NULL, text TEXT NOT NULL);
    CREATE TABLE workouts (
        id INTEGER PRIMARY KEY,
        activity TEXT NOT NULL,
        start INTEGER NOT NULL,
        end INTEGER NOT NULL,
        source INTEGER NOT NULL,
        duration REAL NOT NULL,
        distance REAL,
        active_energy REAL,
        import INTEGER,
        UNIQUE (start, end, activity, source));
    CREATE TABLE workout_statistics (
        workout INTEGER, type TEXT, unit TEXT, sum REAL, average REAL, minimum REAL, maximum REAL,
        PRIMARY KEY (workout, type, unit)) WITHOUT ROWID;
    CREATE TABLE workout_metadata (
        workout INTEGER, key TEXT, value TEXT,
        PRIMARY KEY (workout, key)) WITHOUT ROWID;
    CREATE TABLE workout_routes (
        workout INTEGER NOT NULL, name TEXT NOT NULL, size INTEGER NOT NULL, deflated BLOB NOT NULL,
        import INTEGER,
        UNIQUE (workout, name));
    CREATE TABLE imports (
        number INTEGER PRIMARY KEY, begun INTEGER NOT NULL, has_added INTEGER NOT NULL DEFAULT 0);
)";

/// From a store of version 1. Rows that are there belong to no import that could be taken back.
constexpr const char* rememberImports = R"(
    ALTER TABLE sources ADD COLUMN import INTEGER;
    ALTER TABLE samples ADD COLUMN import INTEGER;
    ALTER TABLE workouts ADD COLUMN import INTEGER;
    ALTER TABLE workout_routes ADD COLUMN import INTEGER;
    CREATE TABLE imports (
        number INTEGER PRIMARY KEY, begun INTEGER NOT NULL, has_added INTEGER NOT NULL DEFAULT 0);
)";

enum class Content { store, nothing };

/// What the database holds that `connection` is open on; an error when it is not for us.
StoreResult<Content> content(Connection& connection, const std::string& path) {
    Transaction moment(connection, Transaction::Kind::read);  // somebody may be making the tables
    const std::int64_t application = connection.number("PRAGMA application_id");
    if (application == 0 && connection.number("SELECT count(*) FROM sqlite_schema") == 0) return Content::nothing;
    if (application != applicationId) return std::unexpected(storeError(SqliteFailure(SQLITE_NOTADB, ""), path));
    if (connection.number("PRAGMA user_version") > schemaVersion) {
        return std::unexpected(StoreError{StoreError::Kind::newerVersion,
                                          Phrase("The health store {} was written by a newer version of Pedvar. "
                                                 "Install that version to read it.",
                                                 {path})});
    }
    return Content::store;
}

/// SQLite does not wait for others when it changes the kind of journal.
void useWriteAheadLog(Connection& connection, std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds pause{5};
    for (auto waited = pause;; waited += pause) {
        try {
            return connection.runScript("PRAGMA journal_mode = WAL");
        } catch (const SqliteFailure& failure) {
            if (failure.primaryCode() != SQLITE_BUSY || waited > patience) throw;
        }
        std::this_thread::sleep_for(pause);
    }
}

/// Makes the tables as they are to be, unless they are.
void prepareTables(Connection& connection) {
    if (connection.number("PRAGMA user_version") == schemaVersion) return;
    Transaction transaction(connection, Transaction::Kind::write);
    const std::int64_t version = connection.number("PRAGMA user_version");  // nobody may have been faster
    if (version == 0) connection.runScript(schema);
    if (version == 1) connection.runScript(rememberImports);
    connection.runScript(fmt::format("PRAGMA application_id = {}", applicationId).c_str());
    connection.runScript(fmt::format("PRAGMA user_version = {}", schemaVersion).c_str());
    transaction.commit();
}

std::uintmax_t sizeOf(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

}  // namespace

HealthDatabase::HealthDatabase(std::filesystem::path path, std::chrono::milliseconds patience)
    : path_(std::move(path)), name_(path_.string()), patience_(patience) {}

StoreResult<bool> HealthDatabase::verify() {
    auto connection = openForReading();
    if (!connection) return std::unexpected(std::move(connection.error()));
    const bool exists = connection->has_value();
    const std::scoped_lock lock(mutex_);
    spare_ = std::move(*connection);
    return exists;
}

StoreResult<std::optional<Connection>> HealthDatabase::connectForReading() {
    {
        const std::scoped_lock lock(mutex_);
        if (spare_) return std::exchange(spare_, std::nullopt);
    }
    return openForReading();
}

StoreResult<std::optional<Connection>> HealthDatabase::openForReading() {
    using Opened = std::optional<Connection>;
    std::error_code error;
    if (!std::filesystem::exists(path_, error) && !error) return Opened();
    const auto open = [&](Connection::Access access) -> StoreResult<Opened> {
        Connection connection(name_, access, patience_);
        connection.runScript("PRAGMA query_only = 1");
        const auto held = content(connection, name_);
        if (!held) return std::unexpected(held.error());
        return *held == Content::store ? Opened(std::move(connection)) : Opened();
    };
    // Writing is not meant, but lets the last one who looks tidy the log away.
    auto opened = attempt(name_, [&] { return open(Connection::Access::write); });
    // Where the folder cannot be written there can be no log; without one the file is all there is.
    if (!opened && opened.error().kind == StoreError::Kind::unwritable && sizeOf(name_ + "-wal") == 0) {
        opened = attempt(name_, [&] { return open(Connection::Access::readImmutable); });
    }
    return opened;
}

StoreResult<Connection> HealthDatabase::connectForWriting() {
    if (const auto created = createFile(); !created) return std::unexpected(created.error());
    return attempt(name_, [&]() -> StoreResult<Connection> {
        Connection connection(name_, Connection::Access::write, patience_);
        const auto held = content(connection, name_);
        if (!held) return std::unexpected(held.error());
        useWriteAheadLog(connection, patience_);
        connection.runScript("PRAGMA synchronous = NORMAL; PRAGMA cache_size = -16384");
        prepareTables(connection);
        return connection;
    });
}

StoreResult<> HealthDatabase::createFile() {
    // The file is made before SQLite sees it, which would let others read it. Nobody has locks on it yet that
    // closing it would take away.
    const std::scoped_lock lock(creating_);
    int error = makePrivateFolder(path_.parent_path());
    const int file = error == 0 ? ::open(path_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600) : -1;
    if (file >= 0) ::close(file);
    if (error == 0 && (file >= 0 || errno == EEXIST)) return {};
    if (error == 0) error = errno;
    return std::unexpected(
        StoreError{error == ENOSPC ? StoreError::Kind::full : StoreError::Kind::unwritable,
                   Phrase("The health store {} cannot be created: {}.", {name_, std::strerror(error)})});
}

Subscription HealthDatabase::onSamplesAdded(Event<std::vector<std::string>>::Observer listener) {
    const std::scoped_lock lock(mutex_);
    return samplesAdded_.observe(std::move(listener));
}

void HealthDatabase::tellSamplesAdded(const std::vector<std::string>& types) {
    const std::scoped_lock lock(mutex_);
    samplesAdded_.notify(types);
}

}  // namespace pedvar
