/// Documents in parts in the file of the standard defaults.
#pragma once

#include "linux/system/sqlite_defaults.h"
#include "platform/document_parts.h"

namespace pedvar {

/// What a change writes depends on its own length only, not on that of the document.
class SqliteDocumentParts : public DocumentParts {
public:
    /// Keeps the reference.
    explicit SqliteDocumentParts(SqliteDefaults& defaults) : defaults_(defaults) {}

    const UserDefaults& defaults() const override { return defaults_.standard(); }
    std::optional<std::string> frame(std::string_view key) const override;
    std::vector<Part> list(std::string_view name) const override;
    DefaultsResult write(const std::vector<PartsChange>& changes) override;

private:
    SqliteDefaults& defaults_;
};

}  // namespace pedvar
