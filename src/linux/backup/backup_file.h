/// All of a person's data in one file.
#pragma once

#include "linux/backup/data_copy.h"
#include "linux/health/store_error.h"

#include <cstdint>
#include <filesystem>

namespace pedvar {

/// Writes the data of `folder`, as of one moment, into the file `backup`, a zip archive of the databases and a
/// list of them. Yields the size of the data.
StoreResult<std::uint64_t> writeBackup(const std::filesystem::path& folder, const std::filesystem::path& backup,
                                       const GoesOn& goesOn);

/// Unpacks a backup into the empty folder `target`, and checks that nothing of it is missing or was changed.
StoreResult<> readBackup(const std::filesystem::path& backup, const std::filesystem::path& target,
                         const GoesOn& goesOn);

}  // namespace pedvar
