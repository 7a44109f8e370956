/// Records: aggregates whose fields are listed once.
///
///     struct Split {
///         double distance = 0;         // metres
///         std::optional<double> pace;  // minutes per kilometre
///         using Fields = FieldList<&Split::distance, &Split::pace>;
///     };
///     static_assert(isComplete<Split>);
///
/// From the list come JSON in order of declaration, with absent optionals left out, and reading it back.
/// Enumerations are written as the names of their cases, dates as their seconds. Fields are of these types or
/// bool, signed integers, double, std::string, JsonValue, values with a text (UUID), other records, and optionals,
/// vectors and arrays of all of them.
#pragma once

#include "core/json_value.h"
#include "core/json_writer.h"
#include "core/reflection.h"

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace pedvar {

/// A value that documents hold as its text.
template <class T>
concept WrittenAsText = requires(const T& value, std::string_view text) {
    { value.text() } -> std::convertible_to<std::string_view>;
    { T::fromText(text) } -> std::same_as<std::optional<T>>;
};

namespace detail {

template <class T>
constexpr bool isOptional = false;
template <class T>
constexpr bool isOptional<std::optional<T>> = true;

template <class T>
void write(JsonWriter& json, const T& value) {
    if constexpr (Record<T>) {
        json.beginObject();
        forEachField(value, [&]<class Field>(std::string_view name, const Field& field) {
            if constexpr (isOptional<Field>) {
                if (!field) return;
            }
            json.name(name);
            write(json, field);
        });
        json.endObject();
    } else if constexpr (Enumeration<T>) {
        json.write(caseName(value));
    } else if constexpr (isOptional<T>) {
        if (value) {
            write(json, *value);
        } else {
            json.write(nullptr);
        }
    } else if constexpr (WrittenAsText<T>) {
        json.write(std::string_view(value.text()));
    } else if constexpr (requires { json.write(value); }) {
        json.write(value);
    } else {
        json.beginArray();
        for (const auto& element : value) write(json, element);
        json.endArray();
    }
}

}  // namespace detail

/// The JSON document of `value`: a record as a rule, or anything that may be a field of one. None when it holds a
/// NaN or an infinity, which JSON cannot express.
template <class T>
std::optional<std::string> encodeJson(const T& value) {
    JsonWriter json;
    detail::write(json, value);
    if (!json.isExact()) return std::nullopt;
    return std::move(json).text();
}

/// Reads what `encodeJson` wrote: none when a required member is missing, or anything has the wrong type, an
/// unknown case name, or does not fit. Members that the record does not know are passed over. Integers are also
/// read from doubles without fraction, doubles also from integers; an optional is absent when its member is
/// missing or null.
template <class T>
std::optional<T> decodeJson(const JsonValue& json);

/// Reads what it can: a member that is missing or cannot be read keeps its default, also inside of records within
/// the record. None only when `json` is not an object.
template <Record R>
std::optional<R> decodeLeniently(const JsonValue& json, R defaults) {
    if (!json.as<JsonObject>()) return std::nullopt;
    forEachField(defaults, [&]<class Field>(std::string_view name, Field& field) {
        const JsonValue* member = json.member(name);
        if (!member) return;
        if constexpr (Record<Field>) {
            if (auto read = decodeLeniently(*member, field)) field = std::move(*read);
        } else {
            if (auto read = decodeJson<Field>(*member)) field = std::move(*read);
        }
    });
    return defaults;
}

namespace detail {

template <class R>
std::optional<R> decodeRecord(const JsonValue& json) {
    if (!json.as<JsonObject>()) return std::nullopt;
    static const JsonValue missing;
    R record;
    bool isWhole = true;
    forEachField(record, [&]<class Field>(std::string_view name, Field& field) {
        const JsonValue* member = json.member(name);
        auto read = decodeJson<Field>(member ? *member : missing);
        if (read) field = std::move(*read);
        isWhole = isWhole && read;
    });
    return isWhole ? std::optional(std::move(record)) : std::nullopt;
}

template <class List>
std::optional<List> decodeList(const JsonValue& json) {
    const auto* elements = json.as<JsonArray>();
    if (!elements) return std::nullopt;
    List list{};
    if constexpr (requires { list.resize(1); }) list.resize(elements->size());
    if (list.size() != elements->size()) return std::nullopt;
    for (std::size_t i = 0; i < list.size(); ++i) {
        auto read = decodeJson<typename List::value_type>((*elements)[i]);
        if (!read) return std::nullopt;
        list[i] = std::move(*read);
    }
    return list;
}

}  // namespace detail

template <class T>
std::optional<T> decodeJson(const JsonValue& json) {
    if constexpr (Record<T>) {
        return detail::decodeRecord<T>(json);
    } else if constexpr (Enumeration<T>) {
        const auto* name = json.as<std::string>();
        return name ? caseNamed<T>(*name) : std::nullopt;
    } else if constexpr (detail::isOptional<T>) {
        if (json.as<std::nullptr_t>()) return std::optional<T>(std::in_place);
        auto read = decodeJson<typename T::value_type>(json);
        return read ? std::optional<T>(std::move(read)) : std::nullopt;
    } else if constexpr (std::same_as<T, JsonValue>) {
        return json;
    } else if constexpr (std::same_as<T, bool> || std::same_as<T, std::string>) {
        const T* value = json.as<T>();
        return value ? std::optional<T>(*value) : std::nullopt;
    } else if constexpr (WrittenAsText<T>) {
        const auto* text = json.as<std::string>();
        return text ? T::fromText(*text) : std::nullopt;
    } else if constexpr (std::signed_integral<T>) {
        const auto integer = json.integer();
        return integer && std::in_range<T>(*integer) ? std::optional(static_cast<T>(*integer)) : std::nullopt;
    } else if constexpr (std::same_as<T, double>) {
        return json.number();
    } else if constexpr (std::same_as<T, Date>) {
        const auto seconds = json.number();
        return seconds ? std::optional(Date{Seconds{*seconds}}) : std::nullopt;
    } else {
        return detail::decodeList<T>(json);
    }
}

}  // namespace pedvar
