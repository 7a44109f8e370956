#include "core/record.h"

#include "core/personal_metrics.h"
#include "core/preferences.h"

#include <doctest/doctest.h>

#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <map>

using namespace pedvar;

namespace {

struct Lap {
    std::int64_t steps = 0;
    std::optional<double> pace;
    using Fields = FieldList<&Lap::steps, &Lap::pace>;
    bool operator==(const Lap&) const = default;
};
static_assert(isComplete<Lap>);

enum class Shade { bright, veryDark };

struct Everything {
    bool flag = false;
    int small = 0;
    std::int64_t large = 0;
    double real = 0;
    std::string text;
    Date date;
    Shade shade = Shade::bright;
    std::optional<Lap> best;
    std::optional<std::string> note;
    Lap last;
    std::vector<Lap> laps;
    std::array<double, 2> corner{};
    JsonValue extra;
    using Fields =
        FieldList<&Everything::flag, &Everything::small, &Everything::large, &Everything::real, &Everything::text,
                  &Everything::date, &Everything::shade, &Everything::best, &Everything::note, &Everything::last,
                  &Everything::laps, &Everything::corner, &Everything::extra>;
    bool operator==(const Everything&) const = default;
};
static_assert(isComplete<Everything>);

// Whatever is forgotten, listed twice or listed in another order is seen.
struct WithoutLast {
    double first = 0;
    std::optional<std::string> last;
    using Fields = FieldList<&WithoutLast::first>;
};
static_assert(!isComplete<WithoutLast>);

struct WithoutArray {
    std::array<double, 2> first{};
    double second = 0, third = 0;
    using Fields = FieldList<&WithoutArray::second, &WithoutArray::third>;
};
static_assert(!isComplete<WithoutArray>);

struct TwiceTheSame {
    double first = 0, second = 0;
    using Fields = FieldList<&TwiceTheSame::first, &TwiceTheSame::first>;
};
static_assert(!isComplete<TwiceTheSame>);

struct OutOfOrder {
    double first = 0;
    int second = 0;
    double third = 0;
    using Fields = FieldList<&OutOfOrder::third, &OutOfOrder::second, &OutOfOrder::first>;
};
static_assert(!isComplete<OutOfOrder>);

JsonValue object(JsonObject members) {
    return {std::move(members)};
}

JsonValue integer(std::int64_t value) {
    return {value};
}

/// The tree of an `Everything` with something in every field.
JsonObject everythingTree() {
    return {{"flag", {true}},
            {"small", integer(-7)},
            {"large", integer(std::numeric_limits<std::int64_t>::min())},
            {"real", integer(3)},
            {"text", {"x"}},
            {"date", {0.1}},
            {"shade", {"veryDark"}},
            {"best", object({{"steps", {1e3}}, {"pace", {nullptr}}})},
            {"note", {""}},
            {"last", object({{"steps", integer(5)}, {"pace", {4.5}}})},
            {"laps", {JsonArray{object({{"steps", integer(6)}}), object({{"steps", integer(7)}})}}},
            {"corner", {JsonArray{{0.5}, integer(-2)}}},
            {"extra", {JsonArray{{nullptr}, {false}}}}};
}

Everything everything() {
    return {.flag = true,
            .small = -7,
            .large = std::numeric_limits<std::int64_t>::min(),
            .real = 3,
            .text = "x",
            .date = Date{Seconds{0.1}},
            .shade = Shade::veryDark,
            .best = Lap{1000, {}},
            .note = "",
            .last = {5, 4.5},
            .laps = {{6, {}}, {7, {}}},
            .corner = {0.5, -2},
            .extra = {JsonArray{{nullptr}, {false}}}};
}

std::map<std::string, std::string> fieldTexts(const Everything& record) {
    std::map<std::string, std::string> texts;
    forEachField(record, [&](std::string_view name, const auto& field) {
        texts[std::string(name)] = encodeJson(field).value();
    });
    return texts;
}

JsonObject changed(JsonObject members, std::string_view name, const JsonValue& value) {
    for (auto& [memberName, member] : members) {
        if (memberName == name) member = value;
    }
    return members;
}

}  // namespace

TEST_CASE("the preferences document has its keys in order of declaration and the names of the cases as texts") {
    CHECK(
        encodeJson(UserPreferences{}) ==
        R"({"distanceUnit":"kilometers","weightUnit":"kilograms","volumeUnit":"milliliters",)"
        R"("temperatureUnit":"fahrenheit","pressureUnit":"hPa","theme":"dark","weekStartsOn":"monday",)"
        R"("timeFormat":"system","notificationsEnabled":true,"morningMotivationEnabled":true,)"
        R"("goalAchievedAlertEnabled":true,"closeToGoalReminderEnabled":true,"streakProtectionEnabled":true,)"
        R"("eveningReminderEnabled":true,"weeklyRecapEnabled":true,"hapticFeedbackEnabled":true,)"
        R"("preferredStepColor":"green","customStepColorRed":0.2,"customStepColorGreen":0.85,)"
        R"("customStepColorBlue":0.5,"appLanguage":"system","showJapaneseWalking":true,"autoPauseEnabled":false,)"
        R"("homeWeekRowStyle":"calendarWeek","defaultTab":"home"})");
    CHECK(encodeJson(PersonalMetrics{.gender = Gender::other}) ==
          R"({"gender":"other","dailyStepGoal":10000,"ageSource":"manual","genderSource":"manual"})");
}

TEST_CASE("every kind of field is written, and read back from the document's tree") {
    CHECK(encodeJson(everything()) ==
          R"({"flag":true,"small":-7,"large":-9223372036854775808,"real":3,"text":"x","date":0.1,)"
          R"("shade":"veryDark","best":{"steps":1000},"note":"","last":{"steps":5,"pace":4.5},)"
          R"("laps":[{"steps":6},{"steps":7}],"corner":[0.5,-2],"extra":[null,false]})");
    CHECK(decodeJson<Everything>(object(everythingTree())) == everything());
    CHECK(encodeJson(std::vector<Lap>{{1, 2.5}, {2, {}}}) == R"([{"steps":1,"pace":2.5},{"steps":2}])");
    CHECK(decodeJson<std::vector<Lap>>({JsonArray{}}) == std::vector<Lap>{});
}

TEST_CASE("a member of the wrong kind fails the strict reading and keeps its default in the lenient one") {
    const std::pair<std::string, JsonValue> faults[] = {
        {"flag", integer(1)},
        {"small", {std::int64_t{1} << 31}},
        {"large", {0x1p63}},
        {"large", {1.5}},
        {"real", {"3"}},
        {"text", {nullptr}},
        {"date", {"2024-05-01"}},
        {"shade", {"VeryDark"}},
        {"shade", integer(1)},
        {"best", object({})},
        {"note", {false}},
        {"last", {JsonArray{}}},
        {"laps", {JsonArray{object({{"steps", integer(6)}}), {nullptr}}}},
        {"corner", {JsonArray{{0.5}}}},
        {"corner", {JsonArray{{0.5}, {0.5}, {0.5}}}},
    };
    for (const auto& [name, fault] : faults) {
        CAPTURE(name);
        const JsonValue damaged = object(changed(everythingTree(), name, fault));
        CHECK(!decodeJson<Everything>(damaged));
        auto expected = fieldTexts(everything());
        expected[name] = fieldTexts(Everything{})[name];
        CHECK(fieldTexts(*decodeLeniently(damaged, Everything{})) == expected);
    }
}

TEST_CASE("missing and unknown members, and documents that are no objects") {
    JsonObject tree = everythingTree();
    std::erase_if(tree, [](const auto& member) { return member.first == "note" || member.first == "best"; });
    tree.push_back({"unknown", {true}});
    Everything expected = everything();
    expected.note.reset();
    expected.best.reset();
    CHECK(decodeJson<Everything>(object(tree)) == expected);
    CHECK(decodeLeniently(object(tree), everything()) == everything());

    CHECK(!decodeJson<Lap>(object({{"pace", {4.5}}})));
    CHECK(decodeLeniently(object({{"last", object({{"pace", {9.0}}})}}), everything())->last == Lap{5, 9.0});
    CHECK(decodeLeniently(object({{"steps", integer(1)}, {"steps", integer(2)}}), Lap{})->steps == 2);
    for (const JsonValue& other : {JsonValue{}, JsonValue{JsonArray{}}, JsonValue{"{}"}, integer(0)}) {
        CHECK(!decodeJson<Lap>(other));
        CHECK(!decodeLeniently(other, Lap{}));
    }
}

TEST_CASE("doubles are written so that every bit comes back, and integral ones as integers") {
    const std::pair<double, std::string> numbers[] = {
        {0.1 + 0.2, "0.30000000000000004"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {1e22, "1e+22"},
        {100'000, "100000"},
        {-1e15, "-1000000000000000"},
        {2e18, "2000000000000000000"},
        {0x1.8p62, "6917529027641081856"},
        {-0x1p63, "-9223372036854775808"},
        {0.0, "0"},
        {-0.0, "-0.0"},
        {1e-7, "1e-07"},
        {1.0 / 3, "0.3333333333333333"},
    };
    for (const auto& [number, text] : numbers) {
        CHECK(encodeJson(number) == text);
        double read = 0;
        std::from_chars(text.data(), text.data() + text.size(), read);
        CHECK(std::bit_cast<std::uint64_t>(read) == std::bit_cast<std::uint64_t>(number));
    }
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()}) {
        CHECK(!encodeJson(std::vector<Lap>{{1, 2.5}, {2, bad}}));
        CHECK(!encodeJson(Date{Seconds{bad}}));
        CHECK(jsonText({JsonArray{{bad}, {1.5}}}) == "[null,1.5]");
    }
    CHECK(JsonValue{-0x1p63}.integer() == std::numeric_limits<std::int64_t>::min());
    CHECK(!JsonValue{0x1p63}.integer());
    CHECK(!JsonValue{-0x1.0000000000001p63}.integer());
}

TEST_CASE("texts are escaped where they must be, and bytes that are no UTF-8 replaced") {
    const std::pair<std::string, std::string> texts[] = {
        {"a\"b\\c/d", R"("a\"b\\c/d")"},
        {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
        {{'\0', '\x01', '\x1f', '\x7f'}, "\"\\u0000\\u0001\\u001f\x7f\""},
        {"Zoë ’ 語 😀", "\"Zoë ’ 語 😀\""},
        {"\xF4\x8F\xBF\xBF\xED\x9F\xBF", "\"\xF4\x8F\xBF\xBF\xED\x9F\xBF\""},
        {"a\xFF-", "\"a\uFFFD-\""},
        {"\xC3", "\"\uFFFD\""},
        {"\xE2\x82", "\"\uFFFD\uFFFD\""},
        {"\xC0\xAF", "\"\uFFFD\uFFFD\""},
        {"\xED\xA0\x80", "\"\uFFFD\uFFFD\uFFFD\""},
        {"\xE0\x9F\xBF", "\"\uFFFD\uFFFD\uFFFD\""},
        {"\xF0\x8F\xBF\xBF", "\"\uFFFD\uFFFD\uFFFD\uFFFD\""},
        {"\xF4\x90\x80\x80", "\"\uFFFD\uFFFD\uFFFD\uFFFD\""},
        {"\xF0\x9F\x98\"", "\"\uFFFD\uFFFD\uFFFD\\\"\""},
    };
    for (const auto& [text, quoted] : texts) CHECK(encodeJson(text) == quoted);
    const JsonArray brackets{{"{"}, {":"}, {JsonArray{}}};
    CHECK(jsonText(object({{"b\n", {nullptr}}, {"a", object({})}, {"[", {brackets}}})) ==
          R"({"b\n":null,"a":{},"[":["{",":",[]]})");
}

TEST_CASE("cases and names belong together, other texts name none") {
    CHECK(caseNames<Shade> == std::array<std::string_view, 2>{"bright", "veryDark"});
    CHECK(caseName(AppLanguage::arabic) == "arabic");
    CHECK(caseIndex(AppLanguage::arabic) + 1 == caseNames<AppLanguage>.size());
    CHECK(caseNamed<PressureUnit>("hPa") == PressureUnit::hPa);
    for (const char* text : {"", "HPA", "hPa ", "hP", "0"}) CHECK(!caseNamed<PressureUnit>(text));
}
