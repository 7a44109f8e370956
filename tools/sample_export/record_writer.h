/// The records of an export, as the phone writes them.
#pragma once

#include "sample_export/random.h"
#include "sample_export/text_output.h"

#include <cstdint>
#include <string_view>
#include <variant>

namespace pedvar::sample {

enum class Source { phone, watch, typedByHand, drinksApp };

/// From `start` to `end`, in seconds since 1970.
struct Span {
    std::int64_t start;
    std::int64_t end;
};

struct Record {
    std::string_view type;  // "StepCount"; texts as values make it a category
    Source source;
    std::string_view unit;
    Span span;
    std::variant<Decimal, std::string_view> value;
    std::string_view metadataKey = {};  // none when empty
    std::string_view metadataValue = {};
};

/// Writes records that had ended when the export was made and leaves out those that had not.
class RecordWriter {
public:
    RecordWriter(TextOutput& output, std::int64_t exportTime, std::uint64_t seed)
        : output_(output), exportTime_(exportTime), random_(seed, addressStream) {}

    void write(const Record& record);

    /// The attributes of the source that wrote something at `time`, with the device when there is one.
    void writeSource(Source source, std::int64_t time);
    void writeSpan(Span span);

    TextOutput& output() { return output_; }

private:
    static constexpr std::uint64_t addressStream = 0xadd7e55;

    TextOutput& output_;
    std::int64_t exportTime_;
    Random random_;
};

}  // namespace pedvar::sample
