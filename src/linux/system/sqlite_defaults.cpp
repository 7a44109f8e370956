#include "linux/system/sqlite_defaults.h"

#include "core/check.h"
#include "linux/system/sqlite_defaults_format.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <utility>

namespace pedvar {

namespace {

constexpr mode_t ownerOnlyFolder = 0700;
constexpr mode_t ownerOnlyFile = 0600;

/// Why `path` could not be made. Folders that are missing above it are made too.
std::optional<std::string> makeFolder(const std::filesystem::path& path) {
    if (path.empty() || mkdir(path.c_str(), ownerOnlyFolder) == 0 || errno == EEXIST) return std::nullopt;
    if (errno != ENOENT) return std::strerror(errno);
    if (auto reason = makeFolder(path.parent_path())) return reason;
    return mkdir(path.c_str(), ownerOnlyFolder) == 0 ? std::nullopt : std::optional(std::strerror(errno));
}

/// Why the file is neither there nor could be made. An existing file is not opened: closing it would drop the
/// locks that this process holds on it.
std::optional<std::string> makeFile(const std::filesystem::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnlyFile);
    if (file >= 0) {
        close(file);
        return std::nullopt;
    }
    return errno == EEXIST ? std::nullopt : std::optional(std::strerror(errno));
}

std::vector<std::string> sentences(std::initializer_list<std::optional<std::string>> found) {
    std::vector<std::string> sentences;
    for (const auto& sentence : found) {
        if (sentence) sentences.push_back(*sentence);
    }
    return sentences;
}

/// The second of two files is attached under this name.
constexpr std::string_view secondSchema = "second";

/// Pages of 1 KB: most writes change a value or append some hundred bytes, and SQLite writes whole pages, twice.
void setPageSize(Connection& connection, std::string_view schema) {
    connection.run(fmt::format("pragma {}.page_size = 1024", schema));
}

/// Makes the change of the one or two files; why that was not possible. Leaving early closes the connection, which
/// undoes all.
std::optional<std::string> transact(const std::vector<const SqliteDefaultsFile*>& files,
                                    std::chrono::milliseconds patience, const SqliteDefaults::Change& change) {
    try {
        Connection connection(files.front()->path().string(), Connection::Access::write, patience);
        setPageSize(connection, "main");
        std::vector<std::string_view> schemas{"main"};
        if (files.size() > 1) {
            connection.run(fmt::format("attach ? as {}", secondSchema), files.back()->path().string());
            setPageSize(connection, secondSchema);
            schemas.push_back(secondSchema);
        }
        Transaction transaction(connection, Transaction::Kind::write);
        for (const std::string_view schema : schemas) {
            const auto found = holdsDefaults(connection, schema);
            if (!found) return found.error();
            if (!*found) createDefaultsTables(connection, schema);
        }
        if (auto reason = change(connection)) return reason;
        transaction.commit();
        return std::nullopt;
    } catch (const SqliteFailure& failure) {
        return reasonOf(failure);
    }
}

std::unexpected<DefaultsError> refused(std::string message) {
    return std::unexpected(DefaultsError{std::move(message)});
}

}  // namespace

SqliteDefaults::SqliteDefaults(const std::filesystem::path& folder, Access access,
                               std::chrono::milliseconds patience)
    : access_(access),
      patience_(patience),
      standard_(folder / "defaults.sqlite", patience),
      shared_(folder / fmt::format("{}.sqlite", appGroupIdentifier), patience) {}

const UserDefaults* SqliteDefaults::shared() const {
    return shared_.problem() ? nullptr : &shared_;
}

DefaultsResult SqliteDefaults::write(const std::vector<DefaultsChange>& changes) {
    Files files;
    for (const SqliteDefaultsFile* file : {&standard_, &shared_}) {
        if (std::ranges::find(changes, file, &DefaultsChange::store) != changes.end()) files.push_back(file);
    }
    for (const DefaultsChange& change : changes) {
        check(std::ranges::find(files, change.store) != files.end(), "a change is for defaults of another folder");
    }
    const auto schemaOf = [&](const UserDefaults* store) {
        return store == files.front() ? "main" : secondSchema;
    };
    return change(files, [&](Connection& connection) {
        for (const DefaultsChange& change : changes) {
            writeDefault(connection, schemaOf(change.store), change.key, change.value);
        }
        return std::optional<std::string>();
    });
}

DefaultsResult SqliteDefaults::changeStandard(const Change& change) {
    return this->change({&standard_}, change);
}

DefaultsResult SqliteDefaults::change(const Files& files, const Change& change) {
    if (access_ == Access::readOnly) return refused("The settings were opened only to be looked at.");
    if (files.empty()) return {};
    for (const SqliteDefaultsFile* file : files) {
        if (const auto problem = file->problem()) return refused(*problem);
    }
    const std::filesystem::path folder = standard_.path().parent_path();
    auto reason = makeFolder(folder);
    for (const SqliteDefaultsFile* file : files) {
        if (!reason) reason = makeFile(file->path());
    }
    if (!reason) reason = transact(files, patience_, change);
    if (reason) return refused(fmt::format("The settings in {} were not changed: {}.", folder.string(), *reason));
    return {};
}

std::vector<std::string> SqliteDefaults::problems() const {
    return sentences({standard_.problem(), shared_.problem()});
}

std::vector<std::string> SqliteDefaults::damages() const {
    return sentences({standard_.damage(), shared_.damage()});
}

}  // namespace pedvar
