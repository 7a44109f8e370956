#include "core/json_reader.h"

#include "core/json_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace pedvar {

namespace {

constexpr int deepestNesting = 64;  // levels of a value that is passed over

bool isDigit(char character) {
    return '0' <= character && character <= '9';
}

void appendUTF8(std::string& text, std::uint32_t codePoint) {
    const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    const auto appendContinuation = [&](int shift) { append(0x80 | (codePoint >> shift & 0x3f)); };
    if (codePoint < 0x80) return append(codePoint);
    if (codePoint < 0x800) {
        append(0xc0 | codePoint >> 6);
    } else if (codePoint < 0x10000) {
        append(0xe0 | codePoint >> 12);
        appendContinuation(6);
    } else {
        append(0xf0 | codePoint >> 18);
        appendContinuation(12);
        appendContinuation(6);
    }
    appendContinuation(0);
}

template <class Number>
std::optional<Number> parsed(std::string_view digits) {
    Number number{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return number;
}

}  // namespace

std::optional<std::string_view> JsonReader::nextName() {
    if (!enterNext('}')) return std::nullopt;
    const auto name = readText();
    peek();
    return take(':') ? name : std::nullopt;
}

bool JsonReader::nextElement() {
    return enterNext(']');
}

bool JsonReader::readNull() {
    return peek() == 'n' && takeWord("null");
}

std::optional<bool> JsonReader::readBool() {
    const bool value = peek() == 't';
    if (!takeWord(value ? "true" : "false")) return std::nullopt;
    return value;
}

std::optional<std::int64_t> JsonReader::readInteger() {
    const std::string_view digits = takeNumber();
    if (const auto whole = parsed<std::int64_t>(digits)) return whole;
    const auto number = parsed<double>(digits);
    if (number && *number == std::trunc(*number) && -0x1p63 <= *number && *number < 0x1p63) {
        return static_cast<std::int64_t>(*number);
    }
    fail();
    return std::nullopt;
}

std::optional<double> JsonReader::readNumber() {
    const auto number = parsed<double>(takeNumber());
    if (!number) fail();
    return number;
}

std::optional<std::string_view> JsonReader::readText() {
    peek();
    if (!take('"')) return std::nullopt;
    std::size_t plain = plainLength(rest_);
    std::string_view text = rest_.substr(0, plain);
    rest_.remove_prefix(plain);
    if (!rest_.starts_with('"')) {
        text_ = text;
        while (rest_.starts_with('\\')) {
            if (!appendEscaped()) return std::nullopt;
            plain = plainLength(rest_);
            text_ += rest_.substr(0, plain);
            rest_.remove_prefix(plain);
        }
        text = text_;
    }
    if (!take('"')) return std::nullopt;
    return text;
}

std::string_view JsonReader::skipValue() {
    peek();
    const std::string_view start = rest_;
    skipNested(deepestNesting);
    return isSound_ ? start.substr(0, start.size() - rest_.size()) : std::string_view();
}

void JsonReader::fail() {
    isSound_ = false;
    rest_ = {};
}

bool JsonReader::isFinished() {
    peek();
    return isSound_ && rest_.empty();
}

void JsonReader::begin(char bracket) {
    peek();
    if (take(bracket)) isFirst_ = true;
}

/// Goes past the comma to the next member or element; false behind the last one and where neither follows.
bool JsonReader::enterNext(char closingBracket) {
    const bool isFirst = isFirst_;
    isFirst_ = false;
    const char next = peek();
    if (next == closingBracket) {
        take(closingBracket);
        return false;
    }
    if (!isFirst && !take(',')) return false;
    if (rest_.empty()) fail();
    return isSound_;
}

/// What stands next after white space; 0 at the end.
char JsonReader::peek() {
    if (!rest_.empty() && rest_.front() > ' ') return rest_.front();
    const std::size_t blank = rest_.find_first_not_of(" \t\n\r");
    rest_.remove_prefix(blank == std::string_view::npos ? rest_.size() : blank);
    return rest_.empty() ? '\0' : rest_.front();
}

bool JsonReader::take(char character) {
    if (!rest_.starts_with(character)) {
        fail();
        return false;
    }
    rest_.remove_prefix(1);
    return true;
}

bool JsonReader::takeWord(std::string_view word) {
    if (!rest_.starts_with(word)) {
        fail();
        return false;
    }
    rest_.remove_prefix(word.size());
    return true;
}

/// The number that stands next, by the grammar; empty when none does.
std::string_view JsonReader::takeNumber() {
    peek();
    const std::string_view start = rest_;
    if (rest_.starts_with('-')) rest_.remove_prefix(1);
    const bool isZero = rest_.starts_with('0');
    bool isNumber = isZero || takeDigits();
    if (isZero) rest_.remove_prefix(1);
    if (rest_.starts_with('.')) {
        rest_.remove_prefix(1);
        isNumber = takeDigits() && isNumber;
    }
    if (rest_.starts_with('e') || rest_.starts_with('E')) {
        rest_.remove_prefix(1);
        if (rest_.starts_with('+') || rest_.starts_with('-')) rest_.remove_prefix(1);
        isNumber = takeDigits() && isNumber;
    }
    return isNumber ? start.substr(0, start.size() - rest_.size()) : std::string_view();
}

bool JsonReader::takeDigits() {
    std::size_t count = 0;
    while (count < rest_.size() && isDigit(rest_[count])) ++count;
    rest_.remove_prefix(count);
    return count > 0;
}

/// Takes one escape sequence, or two that are one character together.
bool JsonReader::appendEscaped() {
    constexpr std::string_view escapes = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    take('\\');
    const char kind = rest_.empty() ? '\0' : rest_.front();
    if (const std::size_t known = escapes.find(kind); known != std::string_view::npos) {
        text_ += meanings[known];
        return take(kind);
    }
    const auto unit = take('u') ? takeHexDigits() : std::nullopt;
    if (!unit) return false;
    const bool isSurrogate = 0xd800 <= *unit && *unit < 0xe000;
    if (!isSurrogate) {
        appendUTF8(text_, *unit);
        return true;
    }
    const auto second = takeWord("\\u") ? takeHexDigits() : std::nullopt;
    if (!second || *unit >= 0xdc00 || *second < 0xdc00 || 0xe000 <= *second) {
        fail();
        return false;
    }
    appendUTF8(text_, 0x10000 + ((*unit - 0xd800) << 10) + (*second - 0xdc00));
    return true;
}

std::optional<std::uint32_t> JsonReader::takeHexDigits() {
    std::uint32_t value = 0;
    const auto [end, error] =
        std::from_chars(rest_.data(), rest_.data() + std::min<std::size_t>(rest_.size(), 4), value, 16);
    if (error != std::errc() || end != rest_.data() + 4) {
        fail();
        return std::nullopt;
    }
    rest_.remove_prefix(4);
    return value;
}

void JsonReader::skipNested(int depth) {
    if (depth == 0) return fail();
    switch (peek()) {
        case '{':
            beginObject();
            while (nextName()) skipNested(depth - 1);
            return;
        case '[':
            beginArray();
            while (nextElement()) skipNested(depth - 1);
            return;
        case '"':
            readText();
            return;
        case 't':
        case 'f':
            readBool();
            return;
        case 'n':
            readNull();
            return;
        default:
            readNumber();
            return;
    }
}

}  // namespace pedvar
