/// Documents that grow, kept in parts.
///
/// A document in parts is a frame, a text with holes, and a list of texts for each hole:
///
///     frame under "walks"    [<hole: walks>]
///     list "walks"           {"name":"Home","route":[<hole: route 7>]}
///     list "route 7"         {"x":1},{"x":2}     {"x":3}
///
/// Whoever reads the key "walks" sees one JSON document: each hole is filled with the texts of its list, joined by
/// commas. Whoever writes adds texts to lists, which costs what the texts cost, however long the document is; and
/// who needs only a part reads that list.
#pragma once

#include "platform/user_defaults.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace pedvar {

/// The place of a list within a text.
struct Hole {
    std::string list;
    /// How many elements the texts of the list hold together, for those who read only what is around the hole; 0
    /// when nobody asks.
    std::int64_t count = 0;
    bool operator==(const Hole&) const = default;

    /// How it stands in a text: between two control characters, which no JSON text can hold.
    std::string text() const;
};

/// A text with its holes taken out of it.
struct TextAroundHoles {
    std::string text;
    std::vector<Hole> holes;  // in order
};
TextAroundHoles takeHolesOut(std::string_view text);

/// One text of a list.
struct Part {
    std::int32_t position = 0;  // texts stand in order of their positions, which may have gaps
    std::string text;
    bool operator==(const Part&) const = default;
};

/// Answers with the texts of a list in order; a list that does not exist is empty.
using ListReader = std::function<std::vector<Part>(std::string_view list)>;

/// The whole document: `frame` with its holes filled, and the holes in the texts that fill them. Deeper holes than
/// those are left empty.
std::string wholeDocument(std::string_view frame, const ListReader& list);

/// Sets the frame under a key, or removes it when there is none. Lists stay. What stood under the key is gone.
struct SetFrame {
    std::string key;
    std::optional<std::string> frame;
};
/// Puts a text where none may stand yet; before all others when there is no position.
struct AddPart {
    std::string list;
    std::optional<std::int32_t> position;
    std::string text;
};
/// Replaces the text `expected`, or removes it when there is no replacement.
struct ReplacePart {
    std::string list;
    std::int32_t position;
    std::string expected;
    std::optional<std::string> replacement;
};
/// Removes a list with all its texts.
struct RemoveList {
    std::string list;
};
using PartsChange = std::variant<SetFrame, AddPart, ReplacePart, RemoveList>;

/// The documents in parts of the standard store.
class DocumentParts {
public:
    virtual ~DocumentParts() = default;

    /// The store, in which the documents stand whole.
    virtual const UserDefaults& defaults() const = 0;

    /// The text of the document under `key` with its holes; none when no document in parts stands there.
    virtual std::optional<std::string> frame(std::string_view key) const = 0;
    virtual std::vector<Part> list(std::string_view name) const = 0;

    /// Makes all changes in this order, or none: then, too, when a text to be replaced is another one by now, or
    /// one stands already where one is to be added.
    virtual DefaultsResult write(const std::vector<PartsChange>& changes) = 0;
};

}  // namespace pedvar
