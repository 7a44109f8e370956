#include "core/json_value.h"

#include "core/json_writer.h"

#include <algorithm>
#include <cmath>
#include <ranges>

namespace pedvar {

const JsonValue* JsonValue::member(std::string_view name) const {
    const auto* members = as<JsonObject>();
    if (!members) return nullptr;
    const auto reversed = std::views::reverse(*members);
    const auto found = std::ranges::find(reversed, name, &JsonObject::value_type::first);
    return found == reversed.end() ? nullptr : &found->second;
}

std::optional<std::int64_t> JsonValue::integer() const {
    if (const auto* whole = as<std::int64_t>()) return *whole;
    const auto* number = as<double>();
    const bool fits = number && *number == std::trunc(*number) && -0x1p63 <= *number && *number < 0x1p63;
    return fits ? std::optional(static_cast<std::int64_t>(*number)) : std::nullopt;
}

std::optional<double> JsonValue::number() const {
    if (const auto* number = as<double>()) return *number;
    if (const auto* whole = as<std::int64_t>()) return static_cast<double>(*whole);
    return std::nullopt;
}

std::string jsonText(const JsonValue& value) {
    JsonWriter json;
    json.write(value);
    return std::move(json).text();
}

}  // namespace pedvar
