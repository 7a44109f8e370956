/// The folder of the data as a whole.
#pragma once

#include "linux/health/store_error.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace pedvar {

/// Held by whoever uses the files in a data folder by their paths. Ends with the process at the latest.
class FolderUse {
public:
    /// Waits while the folder is being replaced. A folder that is not there needs no holding.
    static FolderUse among(const std::filesystem::path& folder);
    /// None when others still use it after `patience`.
    static std::optional<FolderUse> alone(const std::filesystem::path& folder, std::chrono::milliseconds patience);

    FolderUse(FolderUse&& other) noexcept;
    FolderUse& operator=(FolderUse&& other) noexcept;
    ~FolderUse();

private:
    explicit FolderUse(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

/// Puts the folder `prepared` in the place of `folder`, both on one file system, at once. Where the old one is
/// kept; none when there was no old one.
StoreResult<std::optional<std::filesystem::path>> replaceFolder(const std::filesystem::path& folder,
                                                                const std::filesystem::path& prepared);

}  // namespace pedvar
