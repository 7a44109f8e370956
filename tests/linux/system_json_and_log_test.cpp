#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/system_log.h"
#include "support/environment.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <memory>

using namespace pedvar;

namespace {

JsonValue parsed(std::string_view text) {
    auto value = NlohmannJsonParser().parse(text);
    REQUIRE(value);
    return *value;
}

std::string fault(std::string_view text) {
    const auto value = NlohmannJsonParser().parse(text);
    return value ? "no fault" : value.error();
}

/// What a log of `destination` writes for one line of each of three levels.
std::string logged(LogDestination destination) {
    const TemporaryFolder folder;
    const std::string path = folder / "log";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(path.c_str(), "w"), std::fclose);
    REQUIRE(stream);
    SystemLog log(destination, stream.get());
    log.log(logSubsystem, "HKDiag", LogLevel::debug, "seen");
    log.log(logSubsystem, "HKDiag", LogLevel::error, "gave up 100 %s\nsteps");
    log.log(logSubsystem, "HKDiag", LogLevel::fault, "broken");
    std::fflush(stream.get());
    return readFile(path);
}

}  // namespace

TEST_CASE("a document becomes a tree in its own order") {
    const JsonObject expected{
        {"b", {JsonArray{{true}, {nullptr}, {JsonArray{}}, {JsonObject{}}}}},
        {"a", {std::string("ü\"\n€")}},
        {"b", {JsonObject{{"", {std::int64_t{0}}}}}},
    };
    CHECK(parsed(R"( {"b":[true,null,[],{}], "a":"ü\"\n\u20ac", "b":{"":0}} )") == JsonValue{expected});
    CHECK(parsed("7") == JsonValue{std::int64_t{7}});
}

TEST_CASE("numbers are exact and integers stay integers as long as they fit") {
    CHECK(parsed("9223372036854775807") == JsonValue{std::int64_t{9223372036854775807}});
    CHECK(parsed("-9223372036854775808") == JsonValue{std::numeric_limits<std::int64_t>::min()});
    CHECK(parsed("9223372036854775808") == JsonValue{9223372036854775808.0});
    CHECK(parsed("18446744073709551616") == JsonValue{18446744073709551616.0});
    CHECK(parsed("1.0") == JsonValue{1.0});
    CHECK(parsed("7.2057594037927933e16") == JsonValue{72057594037927936.0});
    CHECK(parsed("4.9406564584124654e-324") == JsonValue{4.9406564584124654e-324});
    CHECK(parsed("694224000.1234567") == JsonValue{694224000.1234567});
}

TEST_CASE("what is no JSON is refused with the place") {
    CHECK(fault("{\"goal\": 8000,}").starts_with("byte 15: parse error at line 1, column 15:"));
    CHECK(fault("[1, 1e999]").starts_with("byte 9: number overflow"));
    for (const char* text :
         {"", "[1] 2", "{\"a\" 1}", "[NaN]", "\"\xff\"", "\"\\ud800\"", "[\"\t\"]", "01", "'a'"}) {
        CAPTURE(text);
        CHECK(fault(text).starts_with("byte "));
    }
}

TEST_CASE("nesting is limited to 256 levels and brackets in texts do not count") {
    const auto nested = [](std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); };
    CHECK(fault(nested(256)) == "no fault");
    CHECK(fault(nested(257)) == "byte 257: nested deeper than 256 levels");
    CHECK(fault(nested(1'000'000)) == "byte 257: nested deeper than 256 levels");
    CHECK(fault("[\"\\\"" + std::string(300, '[') + "\"]") == "no fault");
}

TEST_CASE("a terminal sees errors only and the journal a priority on each line") {
    CHECK(logged(LogDestination::standardError) ==
          "pedvar: com.pedvarapp.PedvarApp HKDiag: gave up 100 %s steps\n"
          "pedvar: com.pedvarapp.PedvarApp HKDiag: broken\n");
    CHECK(logged(LogDestination::journalledError) ==
          "<7>com.pedvarapp.PedvarApp HKDiag: seen\n"
          "<3>com.pedvarapp.PedvarApp HKDiag: gave up 100 %s steps\n"
          "<2>com.pedvarapp.PedvarApp HKDiag: broken\n");
}

TEST_CASE("a journal stream that is not our standard error is not taken for it") {
    const EnvironmentVariable variable("JOURNAL_STREAM", "1:1");
    CHECK(suitableLogDestination() != LogDestination::journalledError);
}
