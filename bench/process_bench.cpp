/// Whole processes: how long a command takes from its start to its end, against the sqlite3 shell with one select.
///
/// process_bench PEDVAR FOLDER: FOLDER holds a data folder for each span of years, `short` and `long`.
#include "bench.h"
#include "process.h"

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <string>
#include <vector>

using namespace pedvar::bench;

namespace {

/// A ride north of ten hours with a fix a second.
void writeRide(const std::string& path) {
    std::ofstream file(path);
    file << std::fixed << std::setprecision(7) << "<gpx><trk><trkseg>\n";
    for (int second = 0; second < 36'000; ++second) {
        file << "<trkpt lat=\"" << 45 + second * 5e-5 << "\" lon=\"9\"><ele>" << 200 + second % 600 / 20
             << "</ele><time>" << "2024-05-01T" << std::setfill('0') << std::setw(2) << 6 + second / 3600 << ':'
             << std::setw(2) << second / 60 % 60 << ':' << std::setw(2) << second % 60 << "Z</time></trkpt>\n";
    }
    file << "</trkseg></trk></gpx>\n";
}

}  // namespace

int main(int count, char** words) {
    if (count != 3) {
        std::fprintf(stderr, "usage: process_bench PEDVAR FOLDER\n");
        return 2;
    }
    const std::string pedvar = words[1];
    const std::string shortData = std::string(words[2]) + "/short";
    const std::string longData = std::string(words[2]) + "/long";
    const std::string suite = longData + "/group.com.pedvarapp.PedvarApp.sqlite";
    const auto times = inTurn(
        101, {[&] { runProcess({"sqlite3", longData + "/health.sqlite", "select count(*) from sources"}); },
              [&] { runProcess({pedvar, "--data", longData, "today", "--json"}); },
              [&] { runProcess({pedvar, "--data", shortData, "today", "--json"}); },
              [&] { runProcess({pedvar, "--data", longData, "widget"}); },
              [&] { runProcess({"sqlite3", suite, "select value from defaults where key = 'todaySteps'"}); }});
    row("`today --json`, ten years of data, against the sqlite3 shell with one select", times[1] / times[0], 1.5,
        milliseconds(times[1]) + " to " + milliseconds(times[0]));
    row("`today --json`, ten years against half a year", times[1] / times[2], 1.1,
        milliseconds(times[1]) + " to " + milliseconds(times[2]));
    row("`widget` against the sqlite3 shell with one select of the same file", times[3] / times[4], 1,
        milliseconds(times[3]) + " to " + milliseconds(times[4]));

    const std::string ride = std::string(words[2]) + "/ride.gpx";
    writeRide(ride);
    const auto replay =
        inTurn(5, {[&] { runProcess({pedvar, "--data", longData, "record", "cycle", "--replay", ride}); }});
    row("`record --replay`, ten hours at one fix a second, against a second", replay[0], 1,
        milliseconds(replay[0]));

    const std::vector<std::string> insights{"pace", "rank", "compare", "calendar"};
    std::vector<Run> runs{[&] { runProcess({pedvar, "--data", longData, "today", "--json"}); }};
    for (const std::string& command : insights) {
        runs.emplace_back([&, command] { runProcess({pedvar, "--data", longData, command, "--json"}); });
    }
    const auto seconds = inTurn(51, runs);
    for (std::size_t i = 0; i < insights.size(); ++i) {
        row("`" + insights[i] + " --json`, ten years of data, against `today --json`", seconds[i + 1] / seconds[0],
            1.5, milliseconds(seconds[i + 1]) + " to " + milliseconds(seconds[0]));
    }
}
