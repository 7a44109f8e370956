#include "core/check.h"

#include <cstdio>
#include <cstdlib>

namespace pedvar {

void check(bool condition, std::string_view text) {
    if (condition) return;
    std::fprintf(stderr, "pedvar: internal error: %.*s\n", static_cast<int>(text.size()), text.data());
    std::abort();
}

}  // namespace pedvar
