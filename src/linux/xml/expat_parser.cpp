#include "linux/xml/expat_parser.h"

#define XML_DTD 1  // declares the limits on entities
#include <expat.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <vector>

namespace pedvar {

namespace {

constexpr XML_Index window = 256 * 1024;                   // bytes
constexpr XML_Index longestToken = 16 * 1024 * 1024;       // bytes
constexpr float largestExpansion = 100;                    // times the document
constexpr unsigned long long freeExpansion = 1024 * 1024;  // bytes that entities may add to any document
constexpr std::size_t deepestNesting = 256;                // elements

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserHandle = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

/// One reading of one document.
class Reading {
public:
    explicit Reading(XmlHandler& handler) : parser_(XML_ParserCreate(nullptr)), handler_(handler) {
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), startElement, endElement);
        XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser_.get(), largestExpansion);
        XML_SetBillionLaughsAttackProtectionActivationThreshold(parser_.get(), freeExpansion);
    }
    Reading(const Reading&) = delete;

    std::expected<void, XmlError> readAll(XmlParser::Source& source) {
        XML_Index bytesRead = 0;
        while (true) {
            // Bytes of a tag whose end has not been seen. Expat starts over with it, so each window doubles it.
            const XML_Index unfinished =
                bytesRead - std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0);
            if (unfinished > longestToken) return failure("a tag or comment is too long");
            const int size =
                static_cast<int>(std::min(std::max(window, unfinished), longestToken + 1 - unfinished));
            void* buffer = XML_GetBuffer(parser_.get(), size);
            if (buffer == nullptr) return failure("out of memory");
            const std::size_t count = source({static_cast<char*>(buffer), static_cast<std::size_t>(size)});
            bytesRead += static_cast<XML_Index>(count);
            const bool isEnd = count == 0;
            if (XML_ParseBuffer(parser_.get(), static_cast<int>(count), isEnd) != XML_STATUS_OK) {
                return failure(isTooDeep_ ? "elements are nested too deep"
                                          : XML_ErrorString(XML_GetErrorCode(parser_.get())));
            }
            if (isEnd) return {};
        }
    }

private:
    std::unexpected<XmlError> failure(const std::string& what) const {
        return std::unexpected(XmlError{what + " (line " +
                                        std::to_string(XML_GetCurrentLineNumber(parser_.get())) + ", column " +
                                        std::to_string(XML_GetCurrentColumnNumber(parser_.get())) + ")"});
    }

    static Reading& of(void* userData) { return *static_cast<Reading*>(userData); }

    static void XMLCALL startElement(void* userData, const XML_Char* name, const XML_Char** attributes) {
        Reading& reading = of(userData);
        if (++reading.depth_ > deepestNesting) {
            reading.isTooDeep_ = true;
            XML_StopParser(reading.parser_.get(), XML_FALSE);
            return;
        }
        reading.attributes_.clear();
        for (; *attributes != nullptr; attributes += 2)
            reading.attributes_.emplace_back(attributes[0], attributes[1]);
        reading.handler_.startElement(name, reading.attributes_);
        reading.listenToCharacters();
    }

    static void XMLCALL endElement(void* userData, const XML_Char* name) {
        Reading& reading = of(userData);
        --reading.depth_;
        if (reading.isTooDeep_) return;
        reading.handler_.endElement(name);
        reading.listenToCharacters();
    }

    void listenToCharacters() {
        XML_SetCharacterDataHandler(parser_.get(), handler_.wantsCharacters() ? characters : nullptr);
    }

    static void XMLCALL characters(void* userData, const XML_Char* text, int length) {
        of(userData).handler_.characters({text, static_cast<std::size_t>(length)});
    }

    ParserHandle parser_;
    XmlHandler& handler_;
    std::vector<std::pair<std::string_view, std::string_view>> attributes_;  // of one tag; kept for its room
    std::size_t depth_ = 0;
    bool isTooDeep_ = false;
};

}  // namespace

std::expected<void, XmlError> ExpatParser::parse(Source source, XmlHandler& handler) const {
    return Reading(handler).readAll(source);
}

}  // namespace pedvar
