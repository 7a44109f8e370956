/// Reading XML with Expat.
#pragma once

#include "platform/xml_parser.h"

namespace pedvar {

/// Holds a window of the document at a time. Reads UTF-8, UTF-16, ISO-8859-1 and US-ASCII, whatever the document
/// says it is. Refuses, with a message, what would cost memory or time out of proportion: entities that expand to
/// more than a hundred times the document, elements nested deeper than 256, and a single tag or comment longer
/// than 16 MiB.
class ExpatParser : public XmlParser {
public:
    std::expected<void, XmlError> parse(Source source, XmlHandler& handler) const override;
};

}  // namespace pedvar
