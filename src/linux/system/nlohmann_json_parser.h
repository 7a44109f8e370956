/// Reading JSON that others wrote.
#pragma once

#include "platform/json_parser.h"

namespace pedvar {

/// Strict RFC 8259 in UTF-8; a document nested deeper than 256 levels is refused.
class NlohmannJsonParser : public JsonParser {
public:
    std::expected<JsonValue, std::string> parse(std::string_view text) const override;
};

}  // namespace pedvar
