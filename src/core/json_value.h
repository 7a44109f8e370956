/// A JSON document as a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace pedvar {

struct JsonValue;
using JsonArray = std::vector<JsonValue>;
/// Members in the order in which they stand.
using JsonObject = std::vector<std::pair<std::string, JsonValue>>;

/// Integers that fit are `int64_t`; all other numbers are doubles.
struct JsonValue {
    std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, JsonArray, JsonObject> value = nullptr;

    /// The member `name` of an object; none elsewhere. Of several of one name the last.
    const JsonValue* member(std::string_view name) const;
    template <class T>
    const T* as() const {
        return std::get_if<T>(&value);
    }
    /// An integer, also one that is written as a double ("1e3"); none when it does not fit.
    std::optional<std::int64_t> integer() const;
    /// A number of either kind.
    std::optional<double> number() const;

    bool operator==(const JsonValue&) const = default;
};

/// The document as compact text. Numbers that JSON cannot express (NaN, infinities) are null.
std::string jsonText(const JsonValue& value);

}  // namespace pedvar
