#include "apps/cli/program.h"

int main(int count, char** arguments) {
    const std::span<const char* const> all(arguments, static_cast<std::size_t>(count));
    return static_cast<int>(pedvar::runProgram(all.subspan(count > 0 ? 1 : 0)));
}
