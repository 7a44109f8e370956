#include "linux/system/sqlite_document_parts.h"

#include "linux/system/sqlite_parts_format.h"

namespace pedvar {

std::optional<std::string> SqliteDocumentParts::frame(std::string_view key) const {
    return defaults_.standardFile().frame(key);
}

std::vector<Part> SqliteDocumentParts::list(std::string_view name) const {
    return defaults_.standardFile().list(name);
}

DefaultsResult SqliteDocumentParts::write(const std::vector<PartsChange>& changes) {
    return defaults_.changeStandard([&](Connection& connection) -> std::optional<Phrase> {
        for (const PartsChange& change : changes) {
            if (auto reason = changeParts(connection, change)) return reason;
        }
        return std::nullopt;
    });
}

}  // namespace pedvar
