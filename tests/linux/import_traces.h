/// What readers of XML see in a document, as text.
#pragma once

#include "linux/import/export_reader.h"

#include <expat.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// Bytes from memory, at most `piece` at a time.
class TextSource : public ByteSource {
public:
    explicit TextSource(std::string_view text, std::size_t piece = 1 << 16) : rest_(text), piece_(piece) {}

    ImportResult<std::size_t> read(std::span<char> buffer) override {
        const std::size_t count = std::min({piece_, buffer.size(), rest_.size()});
        rest_.copy(buffer.data(), count);
        rest_.remove_prefix(count);
        return count;
    }
    std::uint64_t size() const override { return rest_.size(); }

private:
    std::string_view rest_;
    std::size_t piece_;
};

/// "<Record a=1>" and "</Record>", line by line.
class Trace : public ExportHandler {
public:
    std::string text;
    int malformed = 0;

    void startElement(const Tag& tag) override {
        text.append("<").append(tag.name);
        std::string scratch;
        for (const Attribute& attribute : tag.attributes) {
            text.append(" ").append(attribute.name).append("=").append(valueOf(attribute, scratch));
        }
        text += ">\n";
    }
    void endElement(std::string_view name) override { text.append("</").append(name).append(">\n"); }
    void malformedMarkup() override { ++malformed; }
    bool wantsMore(std::uint64_t) override { return true; }
};

/// The same by Expat; none when it finds the document malformed.
inline std::optional<std::string> traceByExpat(std::string_view document) {
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                         XML_ParserFree);
    std::string text;
    XML_SetUserData(parser.get(), &text);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const XML_Char* name, const XML_Char** attributes) {
            auto& trace = *static_cast<std::string*>(data);
            trace.append("<").append(name);
            for (; *attributes != nullptr; attributes += 2) {
                trace.append(" ").append(attributes[0]).append("=").append(attributes[1]);
            }
            trace += ">\n";
        },
        [](void* data, const XML_Char* name) {
            static_cast<std::string*>(data)->append("</").append(name).append(">\n");
        });
    const auto status = XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
    return status == XML_STATUS_OK ? std::optional(text) : std::nullopt;
}

}  // namespace pedvar
