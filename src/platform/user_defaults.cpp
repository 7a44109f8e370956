#include "platform/user_defaults.h"

#include <cmath>

namespace pedvar {

namespace {

template <class T>
std::optional<T> valueAs(const UserDefaults& store, std::string_view key) {
    const auto value = store.value(key);
    if (const T* typed = value ? std::get_if<T>(&*value) : nullptr) return *typed;
    return std::nullopt;
}

}  // namespace

std::optional<std::int64_t> UserDefaults::integer(std::string_view key) const {
    if (const auto whole = valueAs<std::int64_t>(*this, key)) return whole;
    const auto number = valueAs<double>(*this, key);
    // 2^63 is the first double beyond the range.
    if (number && *number == std::trunc(*number) && std::abs(*number) < 0x1p63) {
        return static_cast<std::int64_t>(*number);
    }
    return std::nullopt;
}

std::optional<double> UserDefaults::real(std::string_view key) const {
    if (const auto number = valueAs<double>(*this, key)) return number;
    if (const auto whole = valueAs<std::int64_t>(*this, key)) return static_cast<double>(*whole);
    return std::nullopt;
}

std::optional<std::string> UserDefaults::text(std::string_view key) const {
    return valueAs<std::string>(*this, key);
}

std::optional<Data> UserDefaults::data(std::string_view key) const {
    return valueAs<Data>(*this, key);
}

std::optional<DefaultsChange> setAside(const UserDefaults& store, std::string_view key) {
    auto value = store.value(key);
    if (!value) return std::nullopt;
    const std::string first = std::string(key) + ".unreadable";
    std::string place = first;
    for (int copy = 2;; ++copy) {
        const auto kept = store.value(place);
        if (!kept || *kept == *value) break;
        place = first + std::to_string(copy);
    }
    return DefaultsChange{&store, std::move(place), std::move(value)};
}

}  // namespace pedvar
