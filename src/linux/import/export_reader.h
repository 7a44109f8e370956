/// Reading the document of a phone's health export.
///
/// A reader of our own, for this one kind of document: phones have written exports whose document type is broken,
/// holds stray control bytes or invalid UTF-8, or ends early, and no XML library reads on there. It agrees with
/// one on every well-formed document in UTF-8, except that the document type is skipped: entities and default
/// values that a document would declare there do not exist.
#pragma once

#include "linux/import/byte_source.h"
#include "linux/import/tag.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace pedvar {

/// Is told what a document holds, in its order. What it is handed lives until it returns.
class ExportHandler {
public:
    virtual ~ExportHandler() = default;

    /// `tag` is a start tag or an empty element's; `endElement` follows for both.
    virtual void startElement(const Tag& tag) = 0;
    /// Also called for elements that an end tag further out closes; not for those that are open when the document
    /// ends early.
    virtual void endElement(std::string_view name) = 0;
    /// A piece of markup was passed over because it is malformed.
    virtual void malformedMarkup() = 0;
    /// All that the first `bytesRead` bytes hold was handed out. False stops the reading.
    virtual bool wantsMore(std::uint64_t bytesRead) = 0;
};

struct ReadOutcome {
    enum class End { complete, early, stopped };
    End end = End::complete;
    std::uint64_t repairedBytes = 0;   // control bytes dropped and bytes of invalid UTF-8 replaced
    std::optional<ImportError> error;  // what broke off the source, with `early`
};

/// Reads a document from its root element on. Fails only when there is no such element: whatever comes later is
/// repaired, passed over or ends the document early.
ImportResult<ReadOutcome> readExport(ByteSource& source, ExportHandler& handler);

}  // namespace pedvar
