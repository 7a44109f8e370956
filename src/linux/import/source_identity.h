/// Who wrote a record.
#pragma once

#include "linux/health/samples.h"

#include <string_view>

namespace pedvar {

/// The source of a record by its `sourceName` and the text of its `device`, which may be empty.
///
///     <<HKDevice: 0x282a45810>, name:Watch, manufacturer:Maker, model:Watch, hardware:Watch2,4, software:4.3.1>
///
/// The address in front differs from record to record and the software from month to month; neither is part of it.
SourceDescription describeSource(std::string_view sourceName, std::string_view device);

/// The same source's hand-typed entries, which are a source of their own.
SourceDescription handTyped(const SourceDescription& source);

/// The raw text of a `device` attribute without the address, still escaped: equal for equal devices.
std::string_view withoutAddress(std::string_view rawDevice);

}  // namespace pedvar
