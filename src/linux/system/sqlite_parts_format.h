/// How documents in parts stand in an SQLite file of defaults: the frame as a value beside the others, the texts
/// in a table of their own, in order.
#pragma once

#include "linux/sqlite/connection.h"
#include "platform/document_parts.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// The type of a frame, as the table of keys names it.
inline constexpr std::string_view frameType = "document";

void createPartsTables(Connection& connection, std::string_view schema);

/// All from and in the main database.
std::optional<std::string> readFrame(Connection& connection, std::string_view key);
std::vector<Part> readList(Connection& connection, std::string_view name);

/// Why the change cannot be made, as the end of a sentence; none when it is.
std::optional<Phrase> changeParts(Connection& connection, const PartsChange& change);

}  // namespace pedvar
