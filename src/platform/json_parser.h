/// Reading JSON.
#pragma once

#include "core/json_value.h"

#include <expected>
#include <string>
#include <string_view>

namespace pedvar {

class JsonParser {
public:
    virtual ~JsonParser() = default;

    /// The document as a tree, numbers exact; or what is wrong with it, and where, for people.
    virtual std::expected<JsonValue, std::string> parse(std::string_view text) const = 0;
};

}  // namespace pedvar
