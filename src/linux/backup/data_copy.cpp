#include "linux/backup/data_copy.h"

#include "linux/health/health_database.h"
#include "linux/system/sqlite_defaults_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds patience{10};

/// A moment of one database that stays readable as long as this lives.
class HeldMoment {
public:
    explicit HeldMoment(Connection connection)
        : connection_(std::move(connection)), transaction_(connection_, Transaction::Kind::read) {
        connection_.number("SELECT count(*) FROM sqlite_schema");  // the moment is that of the first read
    }

    void copyTo(const fs::path& file, const GoesOn& goesOn) {
        const int made = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (made < 0) throw SqliteFailure(errno == ENOSPC ? SQLITE_FULL : SQLITE_CANTOPEN, std::strerror(errno));
        ::close(made);
        Connection target(file.string(), Connection::Access::write, patience);
        target.runScript("PRAGMA synchronous = OFF");  // who keeps the copy sees to it that it is on the disk
        sqlite3_backup* const copying = sqlite3_backup_init(target.handle(), "main", connection_.handle(), "main");
        constexpr int pagesAtATime = 1000;
        int step = SQLITE_OK;
        while (copying && step == SQLITE_OK && goesOn()) step = sqlite3_backup_step(copying, pagesAtATime);
        const int result = copying ? sqlite3_backup_finish(copying) : sqlite3_extended_errcode(target.handle());
        if (result != SQLITE_OK) throw SqliteFailure(result, sqlite3_errmsg(target.handle()));
        if (step == SQLITE_OK) step = SQLITE_INTERRUPT;
        if (step != SQLITE_DONE) throw SqliteFailure(step, sqlite3_errstr(step));
    }

private:
    Connection connection_;
    Transaction transaction_;
};

StoreError errorOf(const DefaultsError& error) {
    using Kind = DefaultsError::Kind;
    const auto kind = [&] {
        switch (error.kind) {
            case Kind::unwritable:
                return StoreError::Kind::unwritable;
            case Kind::full:
                return StoreError::Kind::full;
            case Kind::busy:
                return StoreError::Kind::busy;
            case Kind::damaged:
                return StoreError::Kind::damaged;
            case Kind::notAStore:
                return StoreError::Kind::notAStore;
            case Kind::newerVersion:
                break;
        }
        return StoreError::Kind::newerVersion;
    };
    return {kind(), error.message};
}

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error);
}

}  // namespace

StoreResult<> copyData(const fs::path& folder, const fs::path& target, const GoesOn& goesOn) {
    return attempt(folder.string(), [&]() -> StoreResult<> {
        // Nobody can change the settings while their moments are held, so that the moment of the samples, which
        // is held last, is that of all.
        std::map<std::string_view, HeldMoment> settings;
        for (const std::string_view name : {dataFiles[0], dataFiles[1]}) {
            if (!isThere(folder / name)) continue;
            // Only a connection that may write can undo what a killed writer left half done.
            Connection connection((folder / name).string(), Connection::Access::write, patience);
            connection.runScript("PRAGMA query_only = on");
            settings.try_emplace(name, std::move(connection));
        }
        HealthDatabase database(folder / dataFiles[2], patience);
        auto opened = database.connectForReading();
        if (!opened) return std::unexpected(std::move(opened.error()));
        std::optional<HeldMoment> samples;
        if (*opened) samples.emplace(std::move(**opened));
        for (auto& [name, moment] : settings) moment.copyTo(target / name, goesOn);
        settings.clear();
        if (samples) samples->copyTo(target / dataFiles[2], goesOn);
        return {};
    });
}

StoreResult<> checkData(const fs::path& folder) {
    for (const std::string_view name : {dataFiles[0], dataFiles[1]}) {
        const SqliteDefaultsFile file(folder / name, patience);
        if (const auto damage = file.damage()) return std::unexpected(errorOf(*damage));
    }
    HealthDatabase database(folder / dataFiles[2], patience);
    auto opened = database.connectForReading();
    if (!opened) return std::unexpected(std::move(opened.error()));
    if (!*opened) return {};
    return attempt(database.name(), [&] {
        Rows findings = (*opened)->query("PRAGMA integrity_check(1)");
        if (findings.next() && findings.text(0) != "ok") {
            throw SqliteFailure(SQLITE_CORRUPT, std::string(findings.text(0)));
        }
    });
}

}  // namespace pedvar
