#include "linux/system/shared_library.h"

#include <dlfcn.h>

#include <string>

namespace pedvar {

SharedLibrary::SharedLibrary(const char* file, const char* package)
    : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)), file_(file), package_(package) {
    if (handle_) return;
    const char* const reason = dlerror();
    problem_ = Phrase("{} cannot be loaded ({}); the package {} has it.",
                      {std::string(file), std::string(reason ? reason : "unknown"), std::string(package)});
}

SharedLibrary::Function SharedLibrary::function(const char* name) {
    void* const address = handle_ ? dlsym(handle_, name) : nullptr;
    if (!address && !problem_) {
        problem_ = Phrase("{} has no function {}; the package {} of Debian 12 or later has it.",
                          {std::string(file_), std::string(name), std::string(package_)});
    }
    return Function(address);
}

}  // namespace pedvar
