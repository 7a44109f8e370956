#include "linux/system/shared_library.h"

#include <doctest/doctest.h>

#include <cmath>

using namespace pedvar;

TEST_CASE("a library gives its functions, or says what is missing and who has it") {
    SharedLibrary library("libm.so.6", "libc6");
    const decltype(&::floor) round = library.function("floor");
    REQUIRE(!library.problem());
    CHECK(round(2.5) == 2);
    const decltype(&::floor) none = library.function("pedvar_root");
    CHECK(!none);
    CHECK(library.problem()->inEnglish() ==
          "libm.so.6 has no function pedvar_root; the package libc6 of Debian 12 or later has it.");

    SharedLibrary absent("libpedvar-absent.so.9", "libabsent9");
    const decltype(&::floor) nothing = absent.function("floor");
    CHECK(!nothing);
    REQUIRE(absent.problem());
    CHECK(absent.problem()->inEnglish().starts_with("libpedvar-absent.so.9 cannot be loaded ("));
    CHECK(absent.problem()->inEnglish().ends_with("; the package libabsent9 has it."));
}
