#include "core/json_writer.h"

#include "core/json_text.h"
#include "core/utf8.h"

#include <array>
#include <charconv>
#include <cmath>

namespace pedvar {

namespace {

template <class Number>
void appendNumber(std::string& text, Number value) {
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    text.append(digits.data(), end);
}

/// A character that does not stand for itself; a byte that belongs to no character becomes U+FFFD.
void appendEscaped(std::string& text, char character) {
    constexpr std::string_view escaped = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr std::string_view hexDigits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(character);
    if (const std::size_t index = escaped.find(character); index != std::string_view::npos) {
        text += {'\\', letters[index]};
    } else if (byte < 0x80) {
        text += {'\\', 'u', '0', '0', hexDigits[byte >> 4], hexDigits[byte & 0xf]};
    } else {
        text += replacementCharacter;
    }
}

void appendQuoted(std::string& text, std::string_view value) {
    text += '"';
    while (!value.empty()) {
        const std::size_t plain = plainLength(value);
        text += value.substr(0, plain);
        value.remove_prefix(plain);
        if (value.empty()) break;
        appendEscaped(text, value.front());
        value.remove_prefix(1);
    }
    text += '"';
}

}  // namespace

void JsonWriter::name(std::string_view name) {
    separate();
    appendQuoted(text_, name);
    text_ += ':';
}

void JsonWriter::write(std::nullptr_t) {
    writeWord("null");
}

void JsonWriter::write(double value) {
    if (!std::isfinite(value)) {
        isExact_ = false;
        return write(nullptr);
    }
    // Readers take "-0" for the integer 0.
    if (value == 0 && std::signbit(value)) return writeWord("-0.0");
    // "100000" and not "1e+05".
    if (value == std::trunc(value) && std::abs(value) < 0x1p63) return write(static_cast<std::int64_t>(value));
    separate();
    appendNumber(text_, value);
}

void JsonWriter::write(std::string_view value) {
    separate();
    appendQuoted(text_, value);
}

void JsonWriter::write(const JsonValue& value) {
    std::visit([this](const auto& held) { write(held); }, value.value);
}

void JsonWriter::write(const JsonArray& elements) {
    beginArray();
    for (const JsonValue& element : elements) write(element);
    endArray();
}

void JsonWriter::write(const JsonObject& members) {
    beginObject();
    for (const auto& [memberName, value] : members) {
        name(memberName);
        write(value);
    }
    endObject();
}

void JsonWriter::begin(char bracket) {
    separate();
    text_ += bracket;
}

void JsonWriter::separate() {
    // Texts end with a quotation mark, so the last character always tells.
    const bool isFirst = text_.empty() || text_.back() == '{' || text_.back() == '[' || text_.back() == ':';
    if (!isFirst) text_ += ',';
}

void JsonWriter::writeWord(std::string_view word) {
    separate();
    text_ += word;
}

void JsonWriter::writeInteger(std::int64_t value) {
    separate();
    appendNumber(text_, value);
}

}  // namespace pedvar
