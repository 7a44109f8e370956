#include "routes/iso8601.h"

#include <doctest/doctest.h>

#include <cmath>

using namespace pedvar;

TEST_CASE("internet times are read with any fraction, offset and case, without a zone as UTC") {
    for (const char* text :
         {"2024-05-01T06:30:12.25Z", "2024-05-01t06:30:12.25z", "2024-05-01T06:30:12.25",
          "2024-05-01T06:30:12.25000000000000000000000001Z", "2024-05-01T08:30:12.250+02:00",
          "2024-05-01T08:30:12.250+0200", "2024-05-01T08:30:12.250+02", "2024-04-30T23:00:12.250-07:30"}) {
        CAPTURE(text);
        CHECK(parseISO8601(text) == dateFromUnix(1714545012.25));
    }
    CHECK(parseISO8601("2024-05-01T06:30:12Z") == dateFromUnix(1714545012));
    CHECK(parseISO8601("2016-12-31T23:59:60Z") == dateFromUnix(1483228800));
    CHECK(parseISO8601("1969-12-31T23:59:59.5Z") == dateFromUnix(-0.5));
    CHECK(parseISO8601("2024-02-29T00:00:00Z") == dateFromUnix(1709164800));
}

TEST_CASE("what is no internet time is not read") {
    for (const char* text : {"",
                             "now",
                             "2024-05-01",
                             "2024-05-01T06:30Z",
                             "20240501T063012Z",
                             "2024-05-01 06:30:12Z",
                             "2024-05-01T06:30:12 Z",
                             "2024-05-01T06:30:12 +0200",
                             "2024-05-01T06:30:12Z extra",
                             "2024-05-01T06:30:12ZZ",
                             "2024-05-01T06:30:12.Z",
                             "2024-05-01T06:30:12,250Z",
                             "2024-05-01T06:30:12UTC",
                             "2024-05-01T06:30:12+",
                             "2024-05-01T06:30:12+2",
                             "2024-05-01T06:30:12+02:",
                             "2024-05-01T06:30:12+02:00:00",
                             "2024-05-01T06:30:12+24:00",
                             "2024-05-01T06:30:12+02:60",
                             "2024-13-01T06:30:12Z",
                             "2024-00-01T06:30:12Z",
                             "2024-05-32T06:30:12Z",
                             "2024-05-00T06:30:12Z",
                             "2023-02-29T00:00:00Z",
                             "2024-05-01T24:00:00Z",
                             "2024-05-01T06:60:12Z",
                             "2024-05-01T06:30:61Z",
                             "-2024-05-01T06:30:12Z",
                             "+002024-05-01T06:30:12Z",
                             "24-05-01T06:30:12Z"}) {
        CAPTURE(text);
        CHECK(!parseISO8601(text));
    }
}

TEST_CASE("moments are written in UTC, milliseconds rounded with carry") {
    ISO8601Formatter formatter;
    const auto text = [&](double unixTime) { return formatter.format(dateFromUnix(unixTime)); };
    CHECK(text(1714545012.25) == "2024-05-01T06:30:12.250Z");
    CHECK(text(1714545012.9994) == "2024-05-01T06:30:12.999Z");
    CHECK(text(1714545012.9996) == "2024-05-01T06:30:13.000Z");
    CHECK(text(1735689599.9996) == "2025-01-01T00:00:00.000Z");
    CHECK(text(1735689599.25) == "2024-12-31T23:59:59.250Z");
    CHECK(text(-0.001) == "1969-12-31T23:59:59.999Z");
    CHECK(text(-62167219200) == "0000-01-01T00:00:00.000Z");
    CHECK(text(253402300799.999) == "9999-12-31T23:59:59.999Z");
    for (const double never : {-62167219200.001, 253402300800.0, 1e300, std::nan("")}) CHECK(text(never) == "");
}
