/// One domain of defaults as an SQLite file.
#pragma once

#include "platform/document_parts.h"
#include "platform/user_defaults.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

class Connection;

/// Reads the values of one file. A file that does not exist holds nothing, and reading does not make it; what a
/// writer left half done when it was killed is undone first.
class SqliteDefaultsFile : public UserDefaults {
public:
    /// Waits for other processes that write for as long as `patience`.
    SqliteDefaultsFile(std::filesystem::path path, std::chrono::milliseconds patience);
    ~SqliteDefaultsFile() override;

    const std::filesystem::path& path() const { return path_; }

    /// Nothing also when the file cannot be read; `problem` says then why.
    std::optional<DefaultsValue> value(std::string_view key) const override;
    /// All values as of one moment, but for documents in parts.
    DefaultsSnapshot snapshot() const;
    /// Of documents in parts; see `DocumentParts`.
    std::optional<std::string> frame(std::string_view key) const;
    std::vector<Part> list(std::string_view name) const;

    /// Why values could not be read, a sentence; opens the file to see. Stays for the life of this object.
    std::optional<DefaultsError> problem() const;

    /// What a check of the whole file finds, a sentence. Takes as long as reading the file.
    std::optional<DefaultsError> damage() const;

    /// The keys of values that were set aside because nobody could read them.
    std::vector<std::string> keysSetAside() const;

private:
    /// Opens the file if it is there, holds defaults and is not open yet.
    void open() const;
    /// What `find` finds in the open file; a default where there is nothing to read, and where that fails.
    template <class Found>
    Found read(Found (*find)(Connection&, std::string_view), std::string_view name) const;
    void fail(const DefaultsError& reason) const;

    std::filesystem::path path_;
    std::chrono::milliseconds patience_;
    mutable std::unique_ptr<Connection> connection_;  // null while there is nothing to read
    mutable std::optional<DefaultsError> problem_;
};

}  // namespace pedvar
