#include "linux/system/private_folder.h"

#include <sys/stat.h>

#include <cerrno>

namespace pedvar {

int makePrivateFolder(const std::filesystem::path& folder) {
    if (folder.empty() || ::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return 0;
    if (errno != ENOENT) return errno;
    if (const int error = makePrivateFolder(folder.parent_path())) return error;
    return ::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST ? 0 : errno;
}

}  // namespace pedvar
