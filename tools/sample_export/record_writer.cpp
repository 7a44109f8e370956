#include "sample_export/record_writer.h"

#include <array>

namespace pedvar::sample {

namespace {

struct SourceTexts {
    std::string_view name;
    std::string_view device;  // after its address; none when empty
};

constexpr std::array<SourceTexts, 4> sourceTexts{{
    {"Anna’s Phone", "name:iPhone, manufacturer:Apple Inc., model:iPhone, hardware:iPhone14,5"},
    {"Anna’s Watch", "name:Apple Watch, manufacturer:Apple Inc., model:Watch, hardware:Watch6,7"},
    {"Health", ""},
    {"Drinks", ""},
}};

constexpr std::int64_t secondsOfDay = 86'400;

}  // namespace

void RecordWriter::write(const Record& record) {
    if (record.span.end > exportTime_) return;
    const auto* quantity = std::get_if<Decimal>(&record.value);
    output_ << " <Record type=\"HK" << (quantity ? "Quantity" : "Category") << "TypeIdentifier" << record.type
            << "\"";
    writeSource(record.source, record.span.end);
    if (quantity) output_ << " unit=\"" << record.unit << "\"";
    writeSpan(record.span);
    output_ << " value=\"";
    if (quantity) {
        output_ << *quantity;
    } else {
        output_ << std::get<std::string_view>(record.value);
    }
    if (record.metadataKey.empty()) {
        output_ << "\"/>\n";
        return;
    }
    output_ << "\">\n  <MetadataEntry key=\"" << record.metadataKey << "\" value=\"" << record.metadataValue
            << "\"/>\n </Record>\n";
}

void RecordWriter::writeSource(Source source, std::int64_t time) {
    const SourceTexts& texts = sourceTexts[static_cast<std::size_t>(source)];
    // A new version every two months or so, a new number before the dot every year.
    const std::int64_t day = time / secondsOfDay;
    const Decimal version{(day / 365 - 36) * 10 + day % 365 / 61 + 1, 1};
    output_ << " sourceName=\"" << texts.name << "\" sourceVersion=\"" << version << "\"";
    if (texts.device.empty()) return;
    output_ << " device=\"&lt;&lt;HKDevice: 0x28";
    std::array<char, 8> address;
    const auto end = std::to_chars(address.begin(), address.end(), random_.within(0x1000000, 0xfffffff), 16).ptr;
    output_ << std::string_view(address.begin(), end) << "&gt;, " << texts.device << ", software:" << version
            << "&gt;\"";
}

void RecordWriter::writeSpan(Span span) {
    (output_ << " creationDate=\"").date(span.end + 7) << "\"";
    (output_ << " startDate=\"").date(span.start) << "\"";
    (output_ << " endDate=\"").date(span.end) << "\"";
}

}  // namespace pedvar::sample
