/// Reading JSON without a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// Reads one JSON document from front to end, value by value, as the caller asks for them: the counterpart of
/// `JsonWriter`, for large documents of a known shape. Strict RFC 8259 in UTF-8.
///
/// Once anything is wrong, the text or what was asked for, the reader is no longer sound, and everything that it
/// yields from then on is nothing.
class JsonReader {
public:
    /// `text` has to outlive the reader.
    explicit JsonReader(std::string_view text) : rest_(text) {}

    /// Enters the object that stands next; its members follow.
    void beginObject() { begin('{'); }
    /// The name of the next member, whose value stands next then; none behind the last one, where the object is
    /// left. Valid until the next text is read.
    std::optional<std::string_view> nextName();

    /// Enters the array that stands next; its elements follow.
    void beginArray() { begin('['); }
    /// Whether another element stands next; behind the last one the array is left.
    bool nextElement();

    /// Takes a null if it stands next.
    bool readNull();
    std::optional<bool> readBool();
    /// Also of a number that is written with a fraction or an exponent, when it is whole.
    std::optional<std::int64_t> readInteger();
    std::optional<double> readNumber();
    /// Valid until the next text is read.
    std::optional<std::string_view> readText();
    /// Passes over the value that stands next and yields its text.
    std::string_view skipValue();

    /// Makes the reader unsound: the caller has found what it cannot use.
    void fail();

    bool isSound() const { return isSound_; }
    /// Whether all was sound and nothing is left.
    bool isFinished();

private:
    void begin(char bracket);
    bool enterNext(char closingBracket);
    char peek();
    bool take(char character);
    bool takeWord(std::string_view word);
    std::string_view takeNumber();
    bool takeDigits();
    bool appendEscaped();
    std::optional<std::uint32_t> takeHexDigits();
    void skipNested(int depth);

    std::string_view rest_;
    std::string text_;      // of the last text that holds escapes
    bool isFirst_ = false;  // whether the innermost container was only just entered
    bool isSound_ = true;
};

}  // namespace pedvar
