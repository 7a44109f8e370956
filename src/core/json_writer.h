/// Writing JSON.
#pragma once

#include "core/date.h"
#include "core/json_value.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace pedvar {

/// Writes one compact JSON document, value by value. Commas come by themselves. Numbers read back to the same
/// bits; bytes that are no UTF-8 are written as U+FFFD.
class JsonWriter {
public:
    void beginObject() { begin('{'); }
    void endObject() { text_ += '}'; }
    void beginArray() { begin('['); }
    void endArray() { text_ += ']'; }

    /// The name of the object's member that is written next.
    void name(std::string_view name);

    void write(std::nullptr_t);
    void write(std::same_as<bool> auto value) { writeWord(value ? "true" : "false"); }
    void write(std::signed_integral auto value) { writeInteger(value); }
    /// NaN and infinities, which JSON cannot express, are written as null.
    void write(double value);
    void write(Date date) { write(date.time_since_epoch().count()); }
    void write(std::string_view value);
    void write(const JsonValue& value);
    void write(const JsonArray& elements);
    void write(const JsonObject& members);

    /// False once a NaN or an infinity was written.
    bool isExact() const { return isExact_; }
    std::string text() && { return std::move(text_); }

private:
    void begin(char bracket);
    /// Writes a comma, unless nothing stands before in the same brackets.
    void separate();
    void writeWord(std::string_view word);
    void writeInteger(std::int64_t value);

    std::string text_;
    bool isExact_ = true;
};

}  // namespace pedvar
