#include "core/record_reader.h"
#include "core/uuid.h"

#include <doctest/doctest.h>

#include <limits>
#include <vector>

using namespace pedvar;

namespace {

enum class Gait { walk, run };

struct Split {
    double distance = 0;
    std::optional<double> pace;
    using Fields = FieldList<&Split::distance, &Split::pace>;
    bool operator==(const Split&) const = default;
};

struct Walk {
    UUID id;
    Gait gait = Gait::walk;
    Date start;
    bool isDone = false;
    std::int32_t steps = 0;
    std::string name;
    std::vector<Split> splits;
    using Fields =
        FieldList<&Walk::id, &Walk::gait, &Walk::start, &Walk::isDone, &Walk::steps, &Walk::name, &Walk::splits>;
    bool operator==(const Walk&) const = default;
};

const Walk sample{.id = UUID({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xff}),
                  .gait = Gait::run,
                  .start = Date{Seconds{-0.1}},
                  .isDone = true,
                  .steps = std::numeric_limits<std::int32_t>::min(),
                  .name = "Zoë \"\\/\b\f\n\r\t\x01 €🚶",
                  .splits = {{1000, std::nullopt}, {-0.0, 5e-324}, {1e300, 0.1}}};

}  // namespace

TEST_CASE("a record reads back from its own text, and from the same text spread out and escaped") {
    CHECK(readJson<Walk>(*encodeJson(sample)) == sample);
    CHECK(
        readJson<Walk>(
            R"( {"name" : "Zo\u00eb \"\\\/\b\f\n\r\t\u0001 \u20AC\ud83d\udeb6" , "unknown":[{"a":[ ]},null,-1.5e+3],
        "steps":7, "steps":-2147483648.0,
        "isDone":true,"start":-1E-1,"gait":"run","id":"01020304-0506-0708-090a-0b0c0d0e0fff",
        "splits":[{"distance":1e3,"pace":null},{"distance":-0,"pace":5e-324},{"pace":0.1,"distance":1e300}]} )") ==
        sample);
}

TEST_CASE("whatever is not a whole record is none") {
    const std::string good = *encodeJson(sample);
    for (std::size_t length = 0; length < good.size(); ++length) CHECK(!readJson<Walk>(good.substr(0, length)));
    CHECK(!readJson<Walk>(good + "}"));
    const auto replaced = [&](std::string_view from, std::string_view to) {
        std::string text = good;
        return text.replace(text.find(from), from.size(), to);
    };
    CHECK(!readJson<Walk>(replaced("\"run\"", "\"crawl\"")));
    CHECK(!readJson<Walk>(replaced("\"run\"", "1")));
    CHECK(!readJson<Walk>(replaced("-2147483648", "-2147483649")));
    CHECK(!readJson<Walk>(replaced("-2147483648", "0.5")));
    CHECK(!readJson<Walk>(replaced("true", "1")));
    CHECK(!readJson<Walk>(replaced("0FFF", "0FFG")));
    CHECK(!readJson<Walk>(replaced("\"isDone\":", "\"isdone\":")));
    CHECK(!readJson<Walk>(replaced("{\"distance\":1000}", "{}")));
}

TEST_CASE("text that is not JSON is refused") {
    for (const char* text : {"[1 2]", "[1,]", "[,1]", "[01]", "[+1]", "[.5]", "[5.]", "[1e]", "[-]", "[0x1]",
                             "[nan]", "[1e999]", "[1]]", "[1", "1", "[\"a]", "[tru]"}) {
        CAPTURE(text);
        CHECK(!readJson<std::vector<double>>(text));
    }
    for (const char* text :
         {"[\"\x01\"]", "[\"\\x\"]", "[\"\\u12g4\"]", "[\"\\ud800\"]", "[\"\\ud800\\u0041\"]",
          "[\"\\udc00\\ud800\"]", "[\"\xff\"]", "[\"\xed\xa0\x80\"]", "['a']", "[\"\\u-123\"]"}) {
        CAPTURE(text);
        CHECK(!readJson<std::vector<std::string>>(text));
    }
    for (const char* text : {"{\"a\":1,}", "{\"a\"1}", "{a:1}", "{1:1}", "{\"a\":}", "{\"a\":[1}",
                             "{\"a\":{\"b\"}}", "{\"distance\":1 \"pace\":1}"}) {
        CAPTURE(text);
        CHECK(!readJson<Split>(text));
    }
}

TEST_CASE("nesting without end is refused and not followed") {
    CHECK(!readJson<Split>("{\"distance\":1,\"deep\":" + std::string(1'000'000, '[')));
    const std::string deep = std::string(60, '[') + std::string(60, ']');
    CHECK(readJson<Split>("{\"distance\":1,\"deep\":" + deep + "}"));
}

TEST_CASE("a UUID has one text, in upper case, and is random but for version and variant") {
    const auto id = UUID::fromText("0f8fad5b-d9cb-469f-a165-70867728950e");
    REQUIRE(id);
    CHECK(id->text() == "0F8FAD5B-D9CB-469F-A165-70867728950E");
    CHECK(UUID::random({}).text() == "00000000-0000-4000-8000-000000000000");
    UUID::Bytes ones;
    ones.fill(0xff);
    CHECK(UUID::random(ones).text() == "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
    for (const char* text : {"", "0f8fad5b-d9cb-469f-a165-70867728950", "0f8fad5b-d9cb-469f-a165-70867728950e0",
                             "0f8fad5b0d9cb-469f-a165-70867728950e", "{f8fad5b-d9cb-469f-a165-70867728950e",
                             "0f8fad5b-d9cb-469f-a165-7086772895-e"}) {
        CAPTURE(text);
        CHECK(!UUID::fromText(text));
    }
}
