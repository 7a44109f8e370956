#include "linux/import/tag.h"

#include "linux/import/byte_scan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace pedvar {

namespace {

constexpr std::size_t fewAttributes = 32;  // up to here comparing each with each is cheap

bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

/// Bytes that may stand in a name. Those beyond ASCII all may: telling letters from signs there is not worth
/// tables.
constexpr auto nameBytes = [] {
    std::array<bool, 256> allowed{};
    for (int c = 0; c < 256; ++c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool isOther = (c >= '0' && c <= '9') || c == '_' || c == ':' || c == '-' || c == '.' || c >= 0x80;
        allowed[static_cast<std::size_t>(c)] = isLetter || isOther;
    }
    return allowed;
}();

bool canStartName(char c) {
    const bool comesLater = (c >= '0' && c <= '9') || c == '-' || c == '.';
    return nameBytes[static_cast<unsigned char>(c)] && !comesLater;
}

const char* skipSpace(const char* p, const char* end) {
    while (p != end && isSpace(*p)) ++p;
    return p;
}

/// The end of the name at `p`; `p` itself when no name begins there.
const char* skipName(const char* p, const char* end) {
    if (p == end || !canStartName(*p)) return p;
    while (p != end && nameBytes[static_cast<unsigned char>(*p)]) ++p;
    return p;
}

/// The character that "#65" or "#x41" stands for; none when XML does not allow it.
std::optional<char32_t> numericCharacter(std::string_view reference) {
    const bool isHexadecimal = reference.starts_with("#x");
    reference.remove_prefix(isHexadecimal ? 2 : 1);
    std::uint32_t code = 0;
    const char* const end = reference.data() + reference.size();
    const auto [stop, error] = std::from_chars(reference.data(), end, code, isHexadecimal ? 16 : 10);
    if (error != std::errc{} || stop != end) return std::nullopt;
    const bool isControl = code < 0x20 && code != '\t' && code != '\n' && code != '\r';
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (isControl || isSurrogate || code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF) return std::nullopt;
    return code;
}

std::optional<char32_t> referencedCharacter(std::string_view reference) {
    if (reference.size() == 2 && reference[1] == 't') {
        if (reference[0] == 'l') return U'<';
        if (reference[0] == 'g') return U'>';
    }
    if (reference == "amp") return U'&';
    if (reference == "quot") return U'"';
    if (reference == "apos") return U'\'';
    if (reference.starts_with('#')) return numericCharacter(reference);
    return std::nullopt;
}

void appendUtf8(std::string& text, char32_t character) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) return append(character);
    if (character < 0x800) {
        append(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            append(0xE0 | character >> 12);
        } else {
            append(0xF0 | character >> 18);
            append(0x80 | (character >> 12 & 0x3F));
        }
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

}  // namespace

std::string_view valueOf(const Attribute& attribute, std::string& scratch) {
    if (attribute.isPlain) return attribute.raw;
    scratch.clear();
    const std::string_view raw = attribute.raw;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '&') {
            const std::size_t semicolon = raw.find(';', i);
            if (const auto character = referencedCharacter(raw.substr(i + 1, semicolon - i - 1))) {
                appendUtf8(scratch, *character);
            }
            i = semicolon;
        } else if (raw[i] == '\r' && i + 1 < raw.size() && raw[i + 1] == '\n') {
            // One line end, one blank: the LF makes it.
        } else {
            scratch += isSpace(raw[i]) ? ' ' : raw[i];
        }
    }
    return scratch;
}

const Attribute* Tag::find(std::string_view attributeName) const {
    for (const Attribute& attribute : attributes) {
        if (attribute.name == attributeName) return &attribute;
    }
    return nullptr;
}

TagParser::Outcome TagParser::parse(std::string_view text) {
    const char* const end = text.data() + text.size();
    begin_ = text.data();
    const char* p = begin_ + 1;
    if (p == end) return Outcome::incomplete;
    tag_.kind = Tag::Kind::start;
    if (*p == '/') {
        tag_.kind = Tag::Kind::end;
        ++p;
    }
    const char* const nameEnd = skipName(p, end);
    if (nameEnd == end) return Outcome::incomplete;
    if (nameEnd == p) return Outcome::malformed;
    tag_.name = {p, nameEnd};
    tag_.attributes.clear();
    namesSeen_ = 0;
    return parseAttributes(nameEnd, end);
}

TagParser::Outcome TagParser::parseAttributes(const char* position, const char* end) {
    for (;;) {
        const char* const nameBegin = skipSpace(position, end);
        if (nameBegin == end) return Outcome::incomplete;
        if (*nameBegin == '>') {
            length_ = static_cast<std::size_t>(nameBegin + 1 - begin_);
            break;
        }
        if (tag_.kind == Tag::Kind::end) return Outcome::malformed;
        if (*nameBegin == '/') {
            if (nameBegin + 1 == end) return Outcome::incomplete;
            if (nameBegin[1] != '>') return Outcome::malformed;
            tag_.kind = Tag::Kind::empty;
            length_ = static_cast<std::size_t>(nameBegin + 2 - begin_);
            break;
        }
        if (nameBegin == position) return Outcome::malformed;
        const char* const nameEnd = skipName(nameBegin, end);
        if (nameEnd == end) return Outcome::incomplete;
        if (nameEnd == nameBegin) return Outcome::malformed;
        const char* p = skipSpace(nameEnd, end);
        if (p == end) return Outcome::incomplete;
        if (*p != '=') return Outcome::malformed;
        p = skipSpace(p + 1, end);
        if (isTwice({nameBegin, nameEnd})) return Outcome::malformed;
        Attribute& attribute = tag_.attributes.emplace_back();
        attribute.name = {nameBegin, nameEnd};
        if (const Outcome outcome = parseValue(p, end, attribute); outcome != Outcome::complete) return outcome;
        position = p;
    }
    if (tag_.attributes.size() <= fewAttributes) return Outcome::complete;
    std::vector<std::string_view> names;
    for (const Attribute& attribute : tag_.attributes) names.push_back(attribute.name);
    std::ranges::sort(names);
    return std::ranges::adjacent_find(names) == names.end() ? Outcome::complete : Outcome::malformed;
}

TagParser::Outcome TagParser::parseValue(const char*& position, const char* end, Attribute& attribute) const {
    if (position == end) return Outcome::incomplete;
    const char quote = *position;
    if (quote != '"' && quote != '\'') return Outcome::malformed;
    const char* const begin = position + 1;
    for (const char* p = begin;;) {
        p = findValueStop(p, end, quote);
        if (p == end) return Outcome::incomplete;
        if (*p == quote) {
            attribute.raw = {begin, p};
            position = p + 1;
            return Outcome::complete;
        }
        if (*p == '<') return Outcome::malformed;
        attribute.isPlain = false;
        if (*p == '&') {
            // The longest reference in use is "&#x10FFFF;"; leading zeros may make it longer.
            const char* semicolon = p + 1;
            while (semicolon != end && (nameBytes[static_cast<unsigned char>(*semicolon)] || *semicolon == '#')) {
                ++semicolon;
            }
            if (semicolon == end) return Outcome::incomplete;
            if (*semicolon != ';' || !referencedCharacter({p + 1, semicolon})) return Outcome::malformed;
            p = semicolon;
        }
        ++p;
    }
}

/// Whether the tag has an attribute of that name already; of many attributes that is looked for once, at the end.
bool TagParser::isTwice(std::string_view name) {
    const auto hash = static_cast<unsigned>(name.size() * 7) + static_cast<unsigned char>(name.front()) +
                      static_cast<unsigned char>(name.back()) * 3U;
    const std::uint64_t bit = std::uint64_t{1} << (hash % 64);
    const bool mayBeThere = (namesSeen_ & bit) != 0;
    namesSeen_ |= bit;
    return mayBeThere && tag_.attributes.size() < fewAttributes && tag_.find(name) != nullptr;
}

}  // namespace pedvar
