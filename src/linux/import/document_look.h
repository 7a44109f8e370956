/// Knowing documents by their first bytes.
#pragma once

#include "linux/import/byte_source.h"

#include <string>
#include <string_view>

namespace pedvar {

inline constexpr std::size_t documentHeadSize = 1024;  // bytes that are enough to know a document

/// What the front of a file says it is.
struct DocumentLook {
    enum class Kind { healthExport, archive, wrongEncoding, other };
    Kind kind = Kind::other;
    std::string_view name;  // for people, "a web page"
};

DocumentLook lookOf(std::string_view head);

/// The front of a source, as much as is needed to know it. Passes on why there is no source.
ImportResult<std::string> headOf(const ImportResult<std::unique_ptr<ByteSource>>& source);

}  // namespace pedvar
