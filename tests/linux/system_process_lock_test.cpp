#include "linux/system/process_lock.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

namespace pedvar {
namespace {

TEST_CASE("a lock is held once, tells by whom, and is free again when its holder has gone") {
    const TemporaryFolder folder;
    const auto file = folder / "data" / "one.lock";
    auto first = ProcessLock::take(file);
    REQUIRE(first.has_value());
    std::optional<ProcessLock> holder(std::move(*first));

    const auto second = ProcessLock::take(file);
    REQUIRE(!second.has_value());
    CHECK(second.error() == ProcessLock::Refusal{0, getpid()});

    writeFile(file, "");  // as when the disk is full
    CHECK(ProcessLock::take(file).error() == ProcessLock::Refusal{0, std::nullopt});

    holder.reset();
    CHECK(ProcessLock::take(file).has_value());
    writeFile(file, "999999999\n");  // by a process that has died
    CHECK(ProcessLock::take(file).has_value());
    CHECK(readFile(file) == std::to_string(getpid()) + "\n");
}

TEST_CASE("a lock whose file cannot be made says why, and that nobody holds it") {
    const TemporaryFolder folder;
    writeFile(folder / "file", "");
    const auto lock = ProcessLock::take(folder / "file" / "one.lock");
    REQUIRE(!lock.has_value());
    CHECK(lock.error() == ProcessLock::Refusal{ENOTDIR, std::nullopt});
}

}  // namespace
}  // namespace pedvar
