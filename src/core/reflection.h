/// What the compiler knows of records and enumerations: their names, and whether a list is complete.
#pragma once

#include "core/check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <source_location>
#include <string_view>
#include <type_traits>
#include <utility>

namespace pedvar {

/// The members of a record.
template <auto... Members>
struct FieldList {};

/// An aggregate that lists its members as `Fields`.
template <class R>
concept Record = requires { typename R::Fields; };

template <class E>
concept Enumeration = std::is_enum_v<E>;

namespace detail {

template <auto Value>
consteval const char* rendering() {
    return std::source_location::current().function_name();
}

/// "pace" of `&Split::pace`, which compilers render as "... Value = &Split::pace]", and likewise for the cases of
/// an enumeration. Empty for a number that is no case: "... Value = (Color)7]".
template <auto Value>
constexpr std::string_view nameOf = [] {
    std::string_view name = rendering<Value>();
    name.remove_suffix(1);
    name.remove_prefix(name.find_last_of(":)") + 1);
    const bool isNumber = '0' <= name.front() && name.front() <= '9';
    return isNumber ? std::string_view() : name;
}();

template <class R, class T>
consteval std::type_identity<T> typeOf(T R::*) {
    return {};
}
template <auto Member>
using MemberType = typename decltype(typeOf(Member))::type;

/// Whether an `R` can be made of exactly these values, and of not one more.
template <class R, class... Types>
concept MadeOf = requires { R{std::declval<Types>()...}; } && !requires { R{std::declval<Types>()..., {}}; };

/// Room for an `R` that is never made; only the places of its members are compared.
template <class R>
union Room {
    constexpr Room() : nothing() {}
    constexpr ~Room() {}

    char nothing;
    R record;
};
template <class R>
constexpr Room<R> room;

template <class R, class T>
consteval bool precedes(T R::* first, T R::* second) {
    return &(room<R>.record.*first) < &(room<R>.record.*second);
}
/// The order of members of different types is seen by `MadeOf`.
template <class R, class T, class Other>
consteval bool precedes(T R::*, Other R::*) {
    return true;
}

template <class R, class Last>
consteval bool areInOrder(Last R::*) {
    return true;
}
template <class R, class First, class... Rest>
consteval bool areInOrder(First R::* first, Rest R::*... rest) {
    return (precedes(first, rest) && ...) && areInOrder(rest...);
}

template <class R, auto... Members>
consteval bool isDeclaration(FieldList<Members...>) {
    return MadeOf<R, MemberType<Members>...> && areInOrder(Members...);
}

template <Enumeration E, std::size_t Count = 0>
consteval std::size_t caseCount() {
    if constexpr (nameOf<static_cast<E>(Count)>.empty()) {
        return Count;
    } else {
        return caseCount<E, Count + 1>();
    }
}

}  // namespace detail

/// Whether the list of `R` holds all its members, each once, in order of declaration.
template <Record R>
constexpr bool isComplete = detail::isDeclaration<R>(typename R::Fields{});

/// Calls `visit(name, field)` for each member of `record`, in order.
template <Record R, class Visitor>
void forEachField(R& record, Visitor visit) {
    [&]<auto... Members>(FieldList<Members...>) {
        (visit(detail::nameOf<Members>, record.*Members), ...);
    }(typename R::Fields{});
}

/// The names of an enumeration's cases, which count up from 0, in order.
template <Enumeration E>
constexpr auto caseNames = []<std::size_t... Indices>(std::index_sequence<Indices...>) {
    return std::array{detail::nameOf<static_cast<E>(Indices)>...};
}(std::make_index_sequence<detail::caseCount<E>()>{});

/// Counts from 0.
template <Enumeration E>
std::size_t caseIndex(E enumerator) {
    const auto index = static_cast<std::size_t>(enumerator);
    check(index < caseNames<E>.size(), "an enumeration holds a number that is none of its cases");
    return index;
}

template <Enumeration E>
std::string_view caseName(E enumerator) {
    return caseNames<E>[caseIndex(enumerator)];
}

template <Enumeration E>
std::optional<E> caseNamed(std::string_view name) {
    const auto& names = caseNames<E>;
    const auto found = std::ranges::find(names, name);
    if (found == names.end()) return std::nullopt;
    return static_cast<E>(found - names.begin());
}

}  // namespace pedvar
