/// What stands before the root element of an export.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace pedvar {

inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Where the tag `<HealthData` begins in `text`, the front of a document, by the rules of XML: comments,
/// instructions and the document type are passed over. None where they do not lead to such a tag.
std::optional<std::size_t> findRoot(std::string_view text);

/// The first `<HealthData` wherever it stands, for documents whose document type is broken.
std::optional<std::size_t> findRootAnyway(std::string_view text);

}  // namespace pedvar
