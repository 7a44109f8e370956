#include "linux/system/sqlite_defaults_file.h"

#include "linux/system/sqlite_defaults_format.h"
#include "linux/system/sqlite_parts_format.h"

#include <system_error>
#include <utility>

namespace pedvar {

SqliteDefaultsFile::SqliteDefaultsFile(std::filesystem::path path, std::chrono::milliseconds patience)
    : path_(std::move(path)), patience_(patience) {}
SqliteDefaultsFile::~SqliteDefaultsFile() = default;

std::optional<DefaultsValue> SqliteDefaultsFile::value(std::string_view key) const {
    return read(readDefault, key);
}

DefaultsSnapshot SqliteDefaultsFile::snapshot() const {
    const auto all = +[](Connection& connection, std::string_view) { return readDefaults(connection); };
    return DefaultsSnapshot(read(all, {}));
}

std::optional<std::string> SqliteDefaultsFile::frame(std::string_view key) const {
    return read(readFrame, key);
}
std::vector<Part> SqliteDefaultsFile::list(std::string_view name) const {
    return read(readList, name);
}

std::optional<DefaultsError> SqliteDefaultsFile::problem() const {
    open();
    return problem_;
}

std::optional<DefaultsError> SqliteDefaultsFile::damage() const {
    open();
    if (!connection_) return problem_;
    try {
        Rows findings = connection_->query("pragma integrity_check(1)");
        if (findings.next() && findings.text(0) != "ok") {
            fail({Phrase("it is damaged ({})", {std::string(findings.text(0))}), DefaultsError::Kind::damaged});
        }
    } catch (const SqliteFailure& failure) {
        fail(reasonOf(failure));
    }
    return problem_;
}

std::vector<std::string> SqliteDefaultsFile::keysSetAside() const {
    return read(+[](Connection& connection, std::string_view) { return readKeysSetAside(connection); }, {});
}

void SqliteDefaultsFile::open() const {
    if (connection_ || problem_) return;
    std::error_code error;
    if (const auto status = std::filesystem::status(path_, error); !std::filesystem::exists(status)) {
        if (status.type() != std::filesystem::file_type::not_found) fail({std::string_view(error.message())});
        return;
    }
    try {
        // Only a connection that may write can undo what a killed writer left half done.
        auto connection = std::make_unique<Connection>(path_.string(), Connection::Access::write, patience_);
        connection->run("pragma query_only = on");
        const auto found = [&] {
            Transaction moment(*connection, Transaction::Kind::read);  // somebody may be making the tables
            return holdsDefaults(*connection, "main");
        }();
        if (!found) return fail(found.error());
        if (*found) connection_ = std::move(connection);
    } catch (const SqliteFailure& failure) {
        fail(reasonOf(failure));
    }
}

template <class Found>
Found SqliteDefaultsFile::read(Found (*find)(Connection&, std::string_view), std::string_view name) const {
    open();
    if (!connection_) return {};
    try {
        return find(*connection_, name);
    } catch (const SqliteFailure& failure) {
        fail(reasonOf(failure));
        return {};
    }
}

void SqliteDefaultsFile::fail(const DefaultsError& reason) const {
    problem_ = {Phrase("The settings in {} cannot be read: {}.", {path_.string(), reason.message}), reason.kind};
}

}  // namespace pedvar
