#include "linux/sqlite/connection.h"
#include "linux/system/sqlite_defaults.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <limits>

using namespace pedvar;

namespace {

constexpr std::string_view standardFile = "defaults.sqlite";
constexpr std::string_view sharedFile = "group.com.pedvarapp.PedvarApp.sqlite";

using Access = SqliteDefaults::Access;

DefaultsChange in(const UserDefaults* store, std::string key, std::optional<DefaultsValue> value) {
    return {store, std::move(key), std::move(value)};
}

std::int64_t permissions(const std::filesystem::path& path) {
    struct stat status{};
    check(stat(path.c_str(), &status) == 0, "the path exists");
    return status.st_mode & 0777;
}

/// A folder in which both stores hold goal = 1.
struct Stored {
    TemporaryFolder folder;
    SqliteDefaults defaults{folder.path(), Access::readWrite, std::chrono::milliseconds(10)};

    const UserDefaults* shared = defaults.shared();

    Stored() { REQUIRE(setGoals(1)); }

    DefaultsResult setGoals(std::int64_t goal) {
        return defaults.write({in(&defaults.standard(), "goal", goal), in(shared, "goal", goal)});
    }
    std::optional<std::int64_t> standardGoal() const {
        return SqliteDefaults(folder.path(), Access::readOnly).standard().integer("goal");
    }
    Connection otherProcess(std::string_view file) const {
        return {(folder / file).string(), Connection::Access::write, std::chrono::milliseconds(10)};
    }
};

}  // namespace

TEST_CASE("every value comes back as the type and with the bits that were written") {
    const TemporaryFolder folder;
    using Limits = std::numeric_limits<double>;
    const std::vector<DefaultsValue> values{true,
                                            false,
                                            std::int64_t{1},
                                            std::numeric_limits<std::int64_t>::min(),
                                            std::numeric_limits<std::int64_t>::max(),
                                            1.0,
                                            0.1,
                                            -0.0,
                                            9007199254740993.0,
                                            Limits::infinity(),
                                            Limits::denorm_min(),
                                            Date{Seconds{1}},
                                            Date{Seconds{694224000.1234567}},
                                            Date{Seconds{-0.0}},
                                            std::string("1"),
                                            std::string(),
                                            std::string("ü\0€", 6),
                                            Data{"1"},
                                            Data{""},
                                            Data{std::string("\0\xff", 2)}};
    SqliteDefaults defaults(folder.path(), Access::readWrite);
    std::vector<DefaultsChange> changes;
    for (std::size_t i = 0; i < values.size(); ++i) {
        changes.push_back(in(&defaults.standard(), std::to_string(i), values[i]));
    }
    changes.push_back(in(&defaults.standard(), "nan", Limits::quiet_NaN()));
    REQUIRE(defaults.write(changes));

    const SqliteDefaults again(folder.path(), Access::readOnly);
    const auto bits = [](double number) { return std::bit_cast<std::uint64_t>(number); };
    for (std::size_t i = 0; i < values.size(); ++i) {
        CAPTURE(i);
        const auto value = again.standard().value(std::to_string(i));
        REQUIRE(value);
        REQUIRE(value->index() == values[i].index());
        CHECK(*value == values[i]);
        if (const double* number = std::get_if<double>(&*value))
            CHECK(bits(*number) == bits(std::get<double>(values[i])));
    }
    CHECK(again.standard().real("nan").value_or(0) != 0);
    CHECK(!again.standard().value("never written"));
    CHECK(!again.shared()->value("1"));
}

TEST_CASE("a later change of a key wins and a change without value removes it") {
    Stored stored;
    const auto* standard = &stored.defaults.standard();
    REQUIRE(
        stored.defaults.write({in(standard, "goal", std::int64_t{2}), in(standard, "goal", std::string("three")),
                               in(standard, "gone", true), in(standard, "gone", std::nullopt)}));
    CHECK(standard->text("goal") == "three");
    CHECK(!standard->value("gone"));
    CHECK(stored.defaults.shared()->integer("goal") == 1);
}

TEST_CASE("looking creates nothing and cannot write") {
    const TemporaryFolder parent;
    SqliteDefaults defaults(parent / "absent", Access::readOnly);
    CHECK(!defaults.standard().value("goal"));
    REQUIRE(defaults.shared());
    CHECK(!defaults.shared()->value("goal"));
    CHECK(defaults.damages().empty());
    CHECK(!defaults.write({in(&defaults.standard(), "goal", std::int64_t{1})}));
    CHECK(std::filesystem::is_empty(parent.path()));
}

TEST_CASE("folder and files belong to their owner alone whatever the umask") {
    const TemporaryFolder parent;
    const mode_t before = umask(0);
    SqliteDefaults defaults(parent / "new" / "data", Access::readWrite);
    const auto written = defaults.write(
        {in(&defaults.standard(), "goal", std::int64_t{1}), in(defaults.shared(), "goal", std::int64_t{1})});
    umask(before);
    REQUIRE(written);
    CHECK(permissions(parent / "new") == 0700);
    CHECK(permissions(parent / "new" / "data") == 0700);
    CHECK(permissions(parent / "new" / "data" / standardFile) == 0600);
    CHECK(permissions(parent / "new" / "data" / sharedFile) == 0600);
}

TEST_CASE("a write that fails in the second file leaves the first as it was") {
    Stored stored;
    SUBCASE("because another process is writing there") {
        Connection other = stored.otherProcess(sharedFile);
        const Transaction held(other, Transaction::Kind::write);
        const auto written = stored.setGoals(2);
        REQUIRE(!written);
        CHECK(written.error().message.inEnglish().find("another process keeps writing there") !=
              std::string::npos);
    }
    SUBCASE("because it is no longer a database") {
        CHECK(stored.shared->integer("goal") == 1);
        writeFile(stored.folder / sharedFile, std::string(8192, 'x'));
        const auto written = stored.setGoals(2);
        REQUIRE(!written);
        CHECK(written.error().message.inEnglish().find("the file is not a database") != std::string::npos);
    }
    SUBCASE("because it cannot be opened") {
        std::filesystem::remove(stored.folder / sharedFile);
        std::filesystem::create_directory(stored.folder / sharedFile);
        CHECK(!stored.setGoals(2));
    }
    CHECK(stored.standardGoal() == 1);
}

TEST_CASE("others read the old values until a write is complete") {
    Stored stored;
    Connection writer = stored.otherProcess(standardFile);
    Transaction transaction(writer, Transaction::Kind::write);
    writer.run("update defaults set value = 2");
    CHECK(stored.standardGoal() == 1);
    CHECK(stored.defaults.standard().integer("goal") == 1);
    transaction.commit();
    CHECK(stored.standardGoal() == 2);
    CHECK(stored.defaults.standard().integer("goal") == 2);
}

TEST_CASE("what a killed writer left half done is undone by the next look") {
    Stored stored;
    const TemporaryFolder killed;
    {
        Connection writer = stored.otherProcess(standardFile);
        Transaction transaction(writer, Transaction::Kind::write);
        writer.query("pragma cache_spill = 1").next();
        writer.query("pragma cache_size = 1").next();
        writer.run("update defaults set value = 2");
        writer.run("insert into defaults values('long', 'data', zeroblob(200000))");
        std::filesystem::copy(stored.folder.path(), killed.path());
    }
    REQUIRE(std::filesystem::file_size(killed / standardFile) > 20'000);
    const SqliteDefaults defaults(killed.path(), Access::readOnly);
    CHECK(defaults.standard().integer("goal") == 1);
    CHECK(!defaults.standard().value("long"));
    CHECK(defaults.damages().empty());
}

TEST_CASE("a file that holds something else is named and never written to") {
    Stored stored;
    std::string reason;
    SUBCASE("text") {
        writeFile(stored.folder / standardFile, "goal = 8000, and some more text than that");
        reason = "the file is not a database";
    }
    SUBCASE("settings of a newer version") {
        stored.otherProcess(standardFile).runScript("pragma user_version = 2");
        reason = "written by a newer Pedvar";
    }
    SUBCASE("another program's database") {
        std::filesystem::remove(stored.folder / standardFile);
        writeFile(stored.folder / standardFile, "");
        stored.otherProcess(standardFile).runScript("create table defaults(key, type, value)");
        reason = "a database of something else";
    }
    SUBCASE("damaged pages behind the first") {
        std::string bytes = readFile(stored.folder / standardFile);
        std::fill(bytes.begin() + 1024, bytes.end(), 'x');
        writeFile(stored.folder / standardFile, bytes);
        reason = "damaged";
    }
    const std::string before = readFile(stored.folder / standardFile);

    SqliteDefaults defaults(stored.folder.path(), Access::readWrite);
    CHECK(!defaults.standard().value("goal"));
    REQUIRE(defaults.problems().size() == 1);
    CHECK(defaults.problems()[0].message.inEnglish().find((stored.folder / standardFile).string()) !=
          std::string::npos);
    CHECK(defaults.problems()[0].message.inEnglish().find(reason) != std::string::npos);
    const auto written = defaults.write({in(&defaults.standard(), "goal", std::int64_t{2})});
    REQUIRE(!written);
    CHECK(written.error().message == defaults.problems()[0].message);
    CHECK(readFile(stored.folder / standardFile) == before);
}

TEST_CASE("a suite that cannot be opened is none and leaves the standard store usable") {
    Stored stored;
    writeFile(stored.folder / sharedFile, "not a database, but longer than nothing");
    SqliteDefaults defaults(stored.folder.path(), Access::readWrite);
    CHECK(defaults.shared() == nullptr);
    CHECK(defaults.write({in(&defaults.standard(), "goal", std::int64_t{2})}));
    CHECK(stored.standardGoal() == 2);
}

TEST_CASE("a file that was made but never filled holds nothing and can be written") {
    const TemporaryFolder folder;
    writeFile(folder / standardFile, "");
    SqliteDefaults defaults(folder.path(), Access::readWrite);
    CHECK(!defaults.standard().value("goal"));
    CHECK(defaults.problems().empty());
    REQUIRE(defaults.write({in(&defaults.standard(), "goal", std::int64_t{2})}));
    CHECK(defaults.standard().integer("goal") == 2);
}
