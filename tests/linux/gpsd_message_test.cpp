#include "linux/location/gpsd_message.h"
#include "linux/location/receiver_watch.h"

#include <doctest/doctest.h>

#include <optional>
#include <string>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

constexpr Date arrival = dateFromUnix(1'800'000'000);

/// The fix in a report that has `fields` besides what makes it one.
std::optional<CLLocation> fixWith(const std::string& fields, const std::string& sky = "") {
    GpsdInterpreter gpsd;
    gpsd.interpret(sky);
    const auto message = gpsd.interpret(R"({"class":"TPV","lat":48.1,"lon":11.5,)" + fields + "}");
    return locationIn(std::get<GpsdReport>(message), AccuracyFactors(), arrival);
}

}  // namespace

TEST_CASE("accuracies come from the best that the receiver tells") {
    const std::string sky = R"({"class":"SKY","hdop":1.2,"vdop":1.6})";
    struct Case {
        std::string fields, sky;
        double horizontal, vertical;
    };
    const std::vector<Case> cases{
        {R"("mode":3,"altMSL":5,"eph":10,"epx":3,"epy":4,"epv":20)", sky, 6.2, 10.2},
        {R"("mode":3,"altMSL":5,"epx":3,"epy":4)", sky, 3.1, 8},
        {R"("mode":3,"epx":3,"epv":20)", sky, 6, -1},
        {R"("mode":3,"altMSL":5)", "", 20, 20},
        {R"("mode":2,"altMSL":5,"epv":20)", "", 40, -1},
        {R"("mode":2,"eph":10)", "", 6.2, -1},
        {R"("mode":3,"eph":-1,"epx":"3","epy":4)", R"({"class":"SKY","hdop":-2})", 20, -1},
        {R"("mode":3,"altMSL":5)", R"({"class":"SKY","device":"/dev/another","hdop":1.2})", 20, 20},
    };
    for (const Case& each : cases) {
        CAPTURE(each.fields);
        const auto fix = fixWith(each.fields, each.sky);
        REQUIRE(fix);
        CHECK(fix->horizontalAccuracy == doctest::Approx(each.horizontal));
        CHECK(fix->verticalAccuracy == doctest::Approx(each.vertical));
    }
}

TEST_CASE("a fix carries what the receiver knows and nothing else") {
    const auto whole = fixWith(
        R"("mode":3,"time":"2027-01-15T07:59:59.250Z","altMSL":520.5,"altHAE":567,"eph":5,"epv":4,"speed":1.3,"track":271.5)");
    REQUIRE(whole);
    CHECK(*whole == CLLocation{.latitude = 48.1,
                               .longitude = 11.5,
                               .altitude = 520.5,
                               .horizontalAccuracy = 0.62 * 5,
                               .verticalAccuracy = 0.51 * 4,
                               .course = 271.5,
                               .speed = 1.3,
                               .timestamp = arrival - 750ms});
    const auto bare = fixWith(R"("mode":2)");
    REQUIRE(bare);
    CHECK(bare->timestamp == arrival);
    CHECK(bare->speed == -1);
    CHECK(bare->course == -1);
    for (const char* none :
         {R"("mode":1)", R"("mode":0)", R"("mode":"3")", R"("mode":3,"lat":null)", R"("status":1)"}) {
        CAPTURE(none);
        CHECK(!fixWith(none));
    }
}

TEST_CASE("moments that are none are those of the arrival") {
    for (const char* moment :
         {"\"\"", "\"yesterday\"", "1800000000", "\"infinite-future\"", "\"2027-13-01T00:00:00Z\""}) {
        CAPTURE(moment);
        const auto fix = fixWith(R"("mode":2,"time":)" + std::string(moment));
        REQUIRE(fix);
        CHECK(fix->timestamp == arrival);
    }
    CHECK(fixWith(R"("mode":2,"time":"9999-12-31T23:59:59.999Z")")->timestamp > arrival);
}

TEST_CASE("receivers are counted as they come and go") {
    GpsdInterpreter gpsd;
    const auto count = [&](const char* line) { return std::get<GpsdReceivers>(gpsd.interpret(line)).count; };
    CHECK(count(R"({"class":"DEVICES","devices":[]})") == 0);
    CHECK(count(R"({"class":"DEVICE","path":"/dev/ttyUSB0","activated":"2027-01-15T08:00:00Z"})") == 1);
    CHECK(
        count(
            R"({"class":"DEVICES","devices":[{"path":"a"},{"path":"b"},{"path":"c"},{"path":"d"},{"path":"e"}]})") ==
        5);
    CHECK(count(R"({"class":"DEVICE","path":"c","activated":0})") == 4);
    CHECK(count(R"({"class":"DEVICE","path":"c","activated":0})") == 4);
}

TEST_CASE("what gpsd does not say says nothing") {
    std::string nested = R"({"class":"TPV","mode":)";
    for (int i = 0; i < 5'000; ++i) nested += '[';
    for (const std::string& line :
         {std::string(), std::string("\r"), std::string(R"({"class":"TPV","mode":3,"lat":48.1,"lon":1)"),
          std::string(R"({"class":"TPV","mode":3,"lat":NaN,"lon":nan})"), std::string(R"(["class","TPV"])"),
          std::string(R"({"class":["TPV"]})"), std::string(R"({"class":"DEVICES","devices":7})"),
          std::string(R"({"class":"DEVICE","path":7})"), std::string("HTTP/1.1 400 Bad Request"),
          std::string("\0\xff\xfe{}", 5), nested}) {
        CAPTURE(line.substr(0, 80));
        GpsdInterpreter gpsd;
        CHECK(gpsd.interpret(line) == GpsdMessage(GpsdSilence{}));
    }
    // Numbers that are too large for a double make the line no JSON.
    GpsdInterpreter gpsd;
    CHECK(gpsd.interpret(R"({"class":"TPV","mode":3,"lat":1e999,"lon":2})") == GpsdMessage(GpsdSilence{}));
}

TEST_CASE("one receiver is listened to, and another one when it has lost its fix for long") {
    const GpsdPatience patience;
    ReceiverWatch::Moment now{};
    ReceiverWatch watch(patience, now);
    using Mode = GpsdReport::Mode;
    const auto isHeard = [&](const char* receiver, Mode mode) {
        const GpsdReport report{.receiver = receiver, .mode = mode};
        watch.after(report, now);
        return watch.isChosen(report);
    };
    CHECK(!isHeard("usb", Mode::noFix));
    CHECK(isHeard("modem", Mode::twoDimensional));
    CHECK(!isHeard("usb", Mode::threeDimensional));
    now += patience.silence;
    CHECK(!isHeard("usb", Mode::threeDimensional));
    CHECK(isHeard("modem", Mode::noFix));
    now += 1s;
    CHECK(isHeard("usb", Mode::threeDimensional));
    CHECK(!isHeard("modem", Mode::threeDimensional));
}

TEST_CASE("conditions follow from what is heard and for how long nothing is") {
    using State = ReceiverCondition::State;
    const GpsdPatience patience;
    ReceiverWatch::Moment now{};
    ReceiverWatch watch(patience, now);
    const GpsdReport fix{.mode = GpsdReport::Mode::threeDimensional}, none{};
    CHECK(watch.after(GpsdSilence{}, now) == std::nullopt);
    CHECK(watch.after(GpsdReceivers{0}, now) == State::noReceiver);
    CHECK(watch.after(GpsdReceivers{1}, now) == std::nullopt);
    CHECK(watch.after(none, now) == State::noFix);
    CHECK(watch.after(fix, now) == State::fix);
    now += patience.silence;
    CHECK(watch.after(none, now) == State::fix);
    now += 1ms;
    CHECK(watch.after(none, now) == State::noFix);
    now += patience.silence + 1ms;
    CHECK(watch.after(GpsdSilence{}, now) == State::silent);
    CHECK(watch.after(fix, now) == State::fix);
    CHECK(watch.after(GpsdReceivers{0}, now) == State::noReceiver);
    CHECK(watch.after(GpsdReceivers{1}, now) == State::noFix);  // the fix of before is over
    CHECK(!watch.isDead(now + patience.dead));
    CHECK(watch.isDead(now + patience.dead + 1ms));
}
