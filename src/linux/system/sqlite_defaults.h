/// Defaults in SQLite files.
#pragma once

#include "linux/system/sqlite_defaults_file.h"
#include "platform/user_defaults.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// The standard store and the shared suite, a file each in one folder. From the main thread.
///
/// Other processes may read and write the files at the same time; each waits for the others as long as its
/// patience lasts. Files and folder appear with the first write, for their owner only.
class SqliteDefaults : public DefaultsDomains {
public:
    enum class Access { readOnly, readWrite };

    /// What a finished write survives. Waiting for the disk is most of a write.
    enum class Durability { endOfMachine, endOfProcess };

    SqliteDefaults(const std::filesystem::path& folder, Access access,
                   std::chrono::milliseconds patience = std::chrono::seconds(5),
                   Durability durability = Durability::endOfMachine);
    ~SqliteDefaults() override;

    /// The file of the shared suite.
    static std::filesystem::path sharedPath(const std::filesystem::path& folder);

    const UserDefaults& standard() const override { return standard_; }
    const UserDefaults* shared() const override;

    /// One transaction over both files. Refused when one of them could not be read: values that were taken for
    /// absent must not replace those that are there.
    DefaultsResult write(const std::vector<DefaultsChange>& changes) override;

    DefaultsResult update(const std::function<std::vector<DefaultsChange>()>& plan) override;

    /// For what else stands in the standard file than values.
    const SqliteDefaultsFile& standardFile() const { return standard_; }
    /// Makes a change within a transaction, or yields why it cannot be made, as the end of a sentence.
    using Change = std::function<std::optional<Phrase>(Connection&)>;
    DefaultsResult changeStandard(const Change& change);

    /// Why values could not be read, for each file; empty when they could, and when there are none.
    std::vector<DefaultsError> problems() const;

    /// The same after both files have been checked whole.
    std::vector<DefaultsError> damages() const;

private:
    using Files = std::vector<const SqliteDefaultsFile*>;

    /// One transaction over the one or two files, which are made if need be.
    DefaultsResult change(const Files& files, const Change& change);
    /// Why the change of existing files was not possible.
    std::optional<DefaultsError> transactOver(const Files& files, const Change& change);

    Access access_;
    std::chrono::milliseconds patience_;
    Durability durability_;
    bool hasWaitedInVain_ = false;  // then the next change does not wait as well
    SqliteDefaultsFile standard_;
    SqliteDefaultsFile shared_;
    std::unique_ptr<Connection> standardWriter_;  // stays open: most of a small write is opening the file
};

}  // namespace pedvar
