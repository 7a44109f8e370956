/// Reading records out of JSON text, without a tree in between.
#pragma once

#include "core/json_reader.h"
#include "core/record.h"

#include <bitset>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace pedvar {

namespace detail {

template <class T>
std::optional<T> readValue(JsonReader& json);

template <Record R>
std::optional<R> readRecord(JsonReader& json) {
    R record;
    std::bitset<64> isRead;
    json.beginObject();
    auto name = json.nextName();
    while (name) {
        // Members that stand in the order of the fields are all read in one pass.
        bool isKnown = false;
        std::size_t index = 0;
        forEachField(record, [&]<class Field>(std::string_view fieldName, Field& field) {
            if (name == fieldName) {
                isKnown = true;
                isRead.set(index);
                if (auto value = readValue<Field>(json)) field = std::move(*value);
                name = json.nextName();
            }
            ++index;
        });
        if (isKnown) continue;
        json.skipValue();
        name = json.nextName();
    }
    std::size_t index = 0;
    forEachField(record, [&]<class Field>(std::string_view, Field&) {
        if (!isOptional<Field> && !isRead.test(index)) json.fail();
        ++index;
    });
    return json.isSound() ? std::optional(std::move(record)) : std::nullopt;
}

template <class List>
std::optional<List> readList(JsonReader& json) {
    List list;
    json.beginArray();
    while (json.nextElement()) {
        auto element = readValue<typename List::value_type>(json);
        if (!element) return std::nullopt;
        list.push_back(std::move(*element));
    }
    return json.isSound() ? std::optional(std::move(list)) : std::nullopt;
}

template <class T>
std::optional<T> asked(JsonReader& json, std::optional<T> value) {
    if (!value) json.fail();
    return value;
}

template <class T>
std::optional<T> readValue(JsonReader& json) {
    if constexpr (Record<T>) {
        return readRecord<T>(json);
    } else if constexpr (isOptional<T>) {
        if (json.readNull()) return std::optional<T>(std::in_place);
        auto value = readValue<typename T::value_type>(json);
        return value ? std::optional<T>(std::move(value)) : std::nullopt;
    } else if constexpr (std::same_as<T, bool>) {
        return json.readBool();
    } else if constexpr (std::signed_integral<T>) {
        const auto integer = json.readInteger();
        const bool fits = integer && std::in_range<T>(*integer);
        return asked(json, fits ? std::optional(static_cast<T>(*integer)) : std::nullopt);
    } else if constexpr (std::same_as<T, double>) {
        return json.readNumber();
    } else if constexpr (std::same_as<T, Date>) {
        const auto seconds = json.readNumber();
        return seconds ? std::optional(Date{Seconds{*seconds}}) : std::nullopt;
    } else if constexpr (Enumeration<T> || std::same_as<T, std::string> || WrittenAsText<T>) {
        const auto text = json.readText();
        if (!text) return std::nullopt;
        if constexpr (Enumeration<T>) {
            return asked(json, caseNamed<T>(*text));
        } else if constexpr (WrittenAsText<T>) {
            return asked(json, T::fromText(*text));
        } else {
            return T(*text);
        }
    } else {
        return readList<T>(json);
    }
}

}  // namespace detail

/// Reads what `encodeJson` wrote, by the rules of `decodeJson`, out of a whole document: none also when it is no
/// JSON. Lists are whatever has `push_back`.
template <class T>
std::optional<T> readJson(std::string_view document) {
    JsonReader json(document);
    auto value = detail::readValue<T>(json);
    return json.isFinished() ? std::move(value) : std::nullopt;
}

}  // namespace pedvar
