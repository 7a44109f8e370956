/// Small values kept under keys.
#pragma once

#include "core/date.h"
#include "platform/phrase.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace pedvar {

/// Bytes; a JSON document as a rule.
struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
};

/// A property-list value.
using DefaultsValue = std::variant<bool, std::int64_t, double, std::string, Date, Data>;

/// One domain of values: the standard store, or a suite that other processes read while we write.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    virtual std::optional<DefaultsValue> value(std::string_view key) const = 0;

    /// The value under `key` when it is of the asked type; an integer is also read from a double without fraction,
    /// a double also from an integer.
    std::optional<std::int64_t> integer(std::string_view key) const;
    std::optional<double> real(std::string_view key) const;
    std::optional<std::string> text(std::string_view key) const;
    std::optional<Data> data(std::string_view key) const;
};

/// What a domain held at one moment.
class DefaultsSnapshot : public UserDefaults {
public:
    using Values = std::map<std::string, DefaultsValue, std::less<>>;
    explicit DefaultsSnapshot(Values values) : values_(std::move(values)) {}

    std::optional<DefaultsValue> value(std::string_view key) const override {
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    Values values_;
};

/// Sets `key` in `store`, or removes it when there is no value.
struct DefaultsChange {
    const UserDefaults* store;
    std::string key;
    std::optional<DefaultsValue> value;
};

/// Why nothing was written or read.
struct DefaultsError {
    enum class Kind {
        unwritable,    // the file, its folder or file system
        full,          // no space left
        busy,          // another process kept writing for too long
        damaged,       // what is stored cannot be read
        notAStore,     // the file is something else
        newerVersion,  // written by a newer Pedvar
    };
    Phrase message;  // for people
    Kind kind = Kind::unwritable;
};

/// Keeps what stands under `key` and could not be understood: under the key with ".unreadable" behind it, and with
/// a number behind that where something else is kept already. Nothing when nothing stands there.
std::optional<DefaultsChange> setAside(const UserDefaults& store, std::string_view key);

using DefaultsResult = std::expected<void, DefaultsError>;

/// The domains of this person.
class DefaultsDomains {
public:
    virtual ~DefaultsDomains() = default;

    virtual const UserDefaults& standard() const = 0;
    /// The suite shared with widgets and watch; none when it cannot be opened.
    virtual const UserDefaults* shared() const = 0;

    /// Makes all changes or none, also across domains.
    virtual DefaultsResult write(const std::vector<DefaultsChange>& changes) = 0;
    /// The same with changes that depend on what is stored: nobody else writes between what `plan` reads and what
    /// it yields.
    virtual DefaultsResult update(const std::function<std::vector<DefaultsChange>()>& plan) = 0;
};

inline constexpr std::string_view appGroupIdentifier = "group.com.pedvarapp.PedvarApp";

}  // namespace pedvar
