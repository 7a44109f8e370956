#include "linux/system/folder.h"

#include <sys/stat.h>
#include <cerrno>

namespace pedvar {

int makeFolder(const std::filesystem::path& path) {
    constexpr mode_t ownerOnly = 0700;
    if (path.empty() || mkdir(path.c_str(), ownerOnly) == 0 || errno == EEXIST) return 0;
    if (errno != ENOENT) return errno;
    if (const int failure = makeFolder(path.parent_path()); failure != 0) return failure;
    return mkdir(path.c_str(), ownerOnly) == 0 ? 0 : errno;
}

}  // namespace pedvar
