/// Reading XML as a stream.
#pragma once

#include <cstddef>
#include <expected>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace pedvar {

/// Attributes of a start tag, in the order in which they stand; views live as long as the call.
using XmlAttributes = std::span<const std::pair<std::string_view, std::string_view>>;

/// Hears what a parser reads. Names are as written, prefix included.
class XmlHandler {
public:
    virtual ~XmlHandler() = default;

    virtual void startElement(std::string_view name, XmlAttributes attributes) = 0;
    virtual void endElement(std::string_view name) = 0;
    /// Text between tags, in as many pieces as the parser likes.
    virtual void characters(std::string_view text) = 0;
    /// Whether text that follows the tag just heard is wanted. Asked after each tag, because the spaces between
    /// tags are most of the pieces of an indented document.
    virtual bool wantsCharacters() const = 0;
};

/// Why a document was not read to its end, for people: what is wrong, and where.
struct XmlError {
    std::string message;
};

class XmlParser {
public:
    virtual ~XmlParser() = default;

    /// Fills the buffer with the next bytes of the document and yields their number; 0 is the end.
    using Source = std::move_only_function<std::size_t(std::span<char>)>;

    /// Reads a document. External entities are never fetched.
    virtual std::expected<void, XmlError> parse(Source source, XmlHandler& handler) const = 0;
};

}  // namespace pedvar
