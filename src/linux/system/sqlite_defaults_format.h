/// How defaults stand in an SQLite file: a table of keys, the names of their types, and values; and tables for
/// documents in parts.
#pragma once

#include "linux/sqlite/connection.h"
#include "platform/user_defaults.h"

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Whether the database `schema` ("main", or the name of an attached one) holds defaults; false when there is
/// nothing in it yet. The error's message is the end of a sentence.
std::expected<bool, DefaultsError> holdsDefaults(Connection& connection, std::string_view schema);

void createDefaultsTables(Connection& connection, std::string_view schema);

/// From the table of the main database.
std::optional<DefaultsValue> readDefault(Connection& connection, std::string_view key);

/// All values of the main database as of one moment, but for documents in parts.
DefaultsSnapshot::Values readDefaults(Connection& connection);

/// The keys of values that were set aside, in the order of the alphabet.
std::vector<std::string> readKeysSetAside(Connection& connection);

/// Sets `key`, or removes it when there is no value.
void writeDefault(Connection& connection, std::string_view schema, std::string_view key,
                  const std::optional<DefaultsValue>& value);

/// What a failure means for the person, its message as the end of a sentence ("there is no space left on the
/// disk").
DefaultsError reasonOf(const SqliteFailure& failure);

}  // namespace pedvar
