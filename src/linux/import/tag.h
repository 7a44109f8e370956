/// Tags of an XML document, read one by one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

struct Attribute {
    std::string_view name;
    std::string_view raw;  // between the quotes, as written
    bool isPlain = true;   // `raw` is the value: it holds no reference and no white space but blanks
};

/// The value of `attribute`, references resolved: the raw text itself where that will do, else what `scratch` then
/// holds.
std::string_view valueOf(const Attribute& attribute, std::string& scratch);

struct Tag {
    enum class Kind { start, end, empty };
    Kind kind = Kind::start;
    std::string_view name;
    std::vector<Attribute> attributes;

    const Attribute* find(std::string_view attributeName) const;
};

/// Reads a tag and checks it: names, quotes, blanks between attributes, no attribute twice, no reference but
/// numbers and the five that XML itself defines.
class TagParser {
public:
    enum class Outcome { complete, incomplete, malformed };

    /// Reads the tag at the front of `text`, which begins with '<'. `incomplete` asks for the same call with more
    /// text.
    Outcome parse(std::string_view text);

    /// After `complete`: the tag, which borrows from the text, and its length in it.
    const Tag& tag() const { return tag_; }
    std::size_t length() const { return length_; }

private:
    /// Reads the attributes from `position` to the end of the tag.
    Outcome parseAttributes(const char* position, const char* end);
    Outcome parseValue(const char*& position, const char* end, Attribute& attribute) const;
    bool isTwice(std::string_view name);

    Tag tag_;
    std::size_t length_ = 0;
    const char* begin_ = nullptr;
    std::uint64_t namesSeen_ = 0;  // one bit for each hash of an attribute name
};

}  // namespace pedvar
