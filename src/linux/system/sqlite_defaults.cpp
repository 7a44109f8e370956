#include "linux/system/sqlite_defaults.h"

#include "core/check.h"
#include "linux/system/private_folder.h"
#include "linux/system/sqlite_defaults_format.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace pedvar {

namespace {

constexpr mode_t ownerOnlyFile = 0600;

/// Why a call of the system failed; nothing when it did not.
std::optional<DefaultsError> systemError(int error) {
    if (error == 0) return std::nullopt;
    return DefaultsError{Phrase(std::strerror(error)),
                         error == ENOSPC ? DefaultsError::Kind::full : DefaultsError::Kind::unwritable};
}

/// Why the file is neither there nor could be made. An existing file is not opened: closing it would drop the
/// locks that this process holds on it.
std::optional<DefaultsError> makeFile(const std::filesystem::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnlyFile);
    if (file >= 0) {
        close(file);
        return std::nullopt;
    }
    return errno == EEXIST ? std::nullopt : systemError(errno);
}

std::vector<DefaultsError> those(std::initializer_list<std::optional<DefaultsError>> found) {
    std::vector<DefaultsError> errors;
    for (const auto& error : found) {
        if (error) errors.push_back(*error);
    }
    return errors;
}

/// The second of two files is attached under this name.
constexpr const char* secondSchema = "second";

/// Pages of 1 KB: most writes change a value or append some hundred bytes, and SQLite writes whole pages, twice.
void setPageSize(Connection& connection, const char* schema) {
    connection.run(fmt::format("pragma {}.page_size = 1024", schema));
}

std::unique_ptr<Connection> connect(const SqliteDefaultsFile& file, std::chrono::milliseconds patience) {
    auto connection = std::make_unique<Connection>(file.path().string(), Connection::Access::write, patience);
    setPageSize(*connection, "main");
    return connection;
}

void attach(Connection& connection, const SqliteDefaultsFile& file) {
    connection.run(fmt::format("attach ? as {}", secondSchema), file.path().string());
    setPageSize(connection, secondSchema);
}

/// Makes the change; why that was not possible. Leaving early undoes all.
std::optional<DefaultsError> transact(Connection& connection, std::initializer_list<const char*> schemas,
                                      const SqliteDefaults::Change& change) {
    Transaction transaction(connection, Transaction::Kind::write);
    for (const char* schema : schemas) {
        const auto found = holdsDefaults(connection, schema);
        if (!found) return found.error();
        if (!*found) createDefaultsTables(connection, schema);
    }
    if (auto reason = change(connection)) return DefaultsError{std::move(*reason)};
    transaction.commit();
    return std::nullopt;
}

/// Makes the changes, those of the `first` store in the main database.
void writeAll(Connection& connection, const std::vector<DefaultsChange>& changes, const UserDefaults* first) {
    for (const DefaultsChange& change : changes) {
        writeDefault(connection, change.store == first ? "main" : secondSchema, change.key, change.value);
    }
}

}  // namespace

SqliteDefaults::SqliteDefaults(const std::filesystem::path& folder, Access access,
                               std::chrono::milliseconds patience, Durability durability)
    : access_(access),
      patience_(patience),
      durability_(durability),
      standard_(folder / "defaults.sqlite", patience),
      shared_(sharedPath(folder), patience) {}

SqliteDefaults::~SqliteDefaults() = default;

std::filesystem::path SqliteDefaults::sharedPath(const std::filesystem::path& folder) {
    return folder / fmt::format("{}.sqlite", appGroupIdentifier);
}

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
    return change(files, [&](Connection& connection) {
        writeAll(connection, changes, files.front());
        return std::optional<Phrase>();
    });
}

DefaultsResult SqliteDefaults::update(const std::function<std::vector<DefaultsChange>()>& plan) {
    Files files{&standard_};
    if (shared()) files.push_back(&shared_);
    return change(files, [&](Connection& connection) {
        writeAll(connection, plan(), &standard_);
        return std::optional<Phrase>();
    });
}

DefaultsResult SqliteDefaults::changeStandard(const Change& change) {
    return this->change({&standard_}, change);
}

DefaultsResult SqliteDefaults::change(const Files& files, const Change& change) {
    if (access_ == Access::readOnly) {
        return std::unexpected(DefaultsError{Phrase("The settings were opened only to be looked at.")});
    }
    if (files.empty()) return {};
    for (const SqliteDefaultsFile* file : files) {
        if (const auto problem = file->problem()) return std::unexpected(*problem);
    }
    std::error_code unknown;
    if (!std::filesystem::exists(standard_.path(), unknown)) standardWriter_.reset();
    const std::filesystem::path folder = standard_.path().parent_path();
    auto reason = systemError(makePrivateFolder(folder));
    for (const SqliteDefaultsFile* file : files) {
        if (!reason) reason = makeFile(file->path());
    }
    if (!reason) reason = transactOver(files, change);
    hasWaitedInVain_ = reason && reason->kind == DefaultsError::Kind::busy;
    if (!reason) return {};
    return std::unexpected(DefaultsError{
        Phrase("What is stored in {} was not changed: {}.", {folder.string(), reason->message}), reason->kind});
}

std::optional<DefaultsError> SqliteDefaults::transactOver(const Files& files, const Change& change) {
    const auto patience = hasWaitedInVain_ ? std::chrono::milliseconds(0) : patience_;
    try {
        if (files.size() > 1) {
            const auto connection = connect(*files.front(), patience);
            attach(*connection, *files.back());
            return transact(*connection, {"main", secondSchema}, change);
        }
        if (files.front() != &standard_) return transact(*connect(*files.front(), patience), {"main"}, change);
        if (!standardWriter_) {
            standardWriter_ = connect(standard_, patience);
            if (durability_ == Durability::endOfProcess) {
                // Nothing stands in two files of such stores, so the log, which is faster, will do.
                standardWriter_->runScript("pragma synchronous = off; pragma journal_mode = wal");
            }
        }
        return transact(*standardWriter_, {"main"}, change);
    } catch (const SqliteFailure& failure) {
        standardWriter_.reset();
        return reasonOf(failure);
    }
}

std::vector<DefaultsError> SqliteDefaults::problems() const {
    return those({standard_.problem(), shared_.problem()});
}

std::vector<DefaultsError> SqliteDefaults::damages() const {
    return those({standard_.damage(), shared_.damage()});
}

}  // namespace pedvar
