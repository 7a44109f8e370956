/// Why an input cannot be imported.
#pragma once

#include "platform/phrase.h"

#include <cstdint>
#include <expected>
#include <string_view>

namespace pedvar {

struct ImportError {
    enum class Kind {
        notFound,             // there is no such file or folder
        unreadable,           // it is there but cannot be read
        empty,                // a file of no bytes
        notAnExport,          // something else; the message says what it looks like
        noExportInside,       // an archive or folder without an export
        damaged,              // an archive or document that breaks off or contradicts itself
        passwordProtected,    // an encrypted archive
        unsupportedEncoding,  // text that is not UTF-8
    };
    Kind kind = Kind::unreadable;
    Phrase message;  // what is wrong, where, what to do
};

/// "notFound", "unreadable" ...
std::string_view nameOf(ImportError::Kind kind);

template <class T = void>
using ImportResult = std::expected<T, ImportError>;

}  // namespace pedvar
