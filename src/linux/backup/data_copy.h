/// The files of a data folder as of one moment.
#pragma once

#include "linux/health/store_error.h"

#include <array>
#include <filesystem>
#include <functional>
#include <string_view>

namespace pedvar {

/// The files that hold a person's data.
inline constexpr std::array<std::string_view, 3> dataFiles{
    "defaults.sqlite", "group.com.pedvarapp.PedvarApp.sqlite", "health.sqlite"};

/// Asked now and then; false ends what is going on with an error, as if nothing had been begun.
using GoesOn = std::function<bool()>;

/// Copies those files that are there into the folder `target`, all as they were at one moment, while others go on
/// writing. Who writes settings waits as long as copying them takes, who writes samples not at all.
StoreResult<> copyData(const std::filesystem::path& folder, const std::filesystem::path& target,
                       const GoesOn& goesOn);

/// Why the files in `folder` are not what they have to be: unreadable, damaged, or of a newer version.
StoreResult<> checkData(const std::filesystem::path& folder);

}  // namespace pedvar
