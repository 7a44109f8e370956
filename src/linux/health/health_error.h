/// Errors of the health store as the platform knows them.
#pragma once

#include "linux/health/store_error.h"
#include "platform/health_store.h"

#include <string>

namespace pedvar {

/// Of domain "SQLite" with its extended code, or "PedvarStore".
HKError healthError(const StoreError& error);

/// What was asked makes no sense.
HKError invalidArgument(std::string description);

}  // namespace pedvar
