/// Why no route came out of a file.
#pragma once

#include "platform/phrase.h"

#include <string_view>

namespace pedvar {

enum class GPXError { noTrackPoints, invalidFormat, fileNotFound };

/// One sentence for people.
Phrase description(GPXError error);

/// A failure, and what more is known of it.
struct GPXFailure {
    GPXError error = GPXError::invalidFormat;
    Phrase detail;  // a sentence of its own, for example where the document breaks; may be empty
    bool operator==(const GPXFailure&) const = default;

    /// Description and detail.
    Phrase message() const;
};

/// What a document that is not XML seems to be, told by how it begins: "a gzip archive", "a web page". Empty when
/// it cannot be told.
std::string_view kindOfDocument(std::string_view beginning);

}  // namespace pedvar
