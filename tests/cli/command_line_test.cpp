#include "apps/cli/command_line.h"
#include "core/reflection.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {
namespace {

CommandResult<CommandLine> parse(const std::vector<const char*>& arguments) {
    return parseCommandLine(arguments);
}

template <class Wanted>
Wanted parsed(const std::vector<const char*>& arguments) {
    const auto line = parse(arguments);
    REQUIRE(line.has_value());
    return std::get<Wanted>(std::get<Request>(line->wish));
}

TEST_CASE("global options may stand before and behind the command") {
    for (const auto& arguments : {std::vector{"--data", "d", "--now", "2024-05-01", "--json", "today"},
                                  std::vector{"today", "--json", "--now=2024-05-01", "--data", "d"},
                                  std::vector{"--json", "today", "--data=d", "--now", "2024-05-01"}}) {
        const auto line = parse(arguments);
        REQUIRE(line.has_value());
        CHECK(line->global.dataFolder == "d");
        CHECK(line->global.now == "2024-05-01");
        CHECK(line->global.format == OutputFormat::json);
        CHECK(std::holds_alternative<TodayRequest>(std::get<Request>(line->wish)));
    }
}

TEST_CASE("arguments reach the request of their command") {
    CHECK(parsed<ImportRequest>({"import", "a.zip", "--json", "b c"}).paths ==
          std::vector<std::string>{"a.zip", "b c"});
    CHECK(parsed<WeekRequest>({"week"}).day == "today");
    CHECK(parsed<WeekRequest>({"week", "2024-05-01"}).day == "2024-05-01");
    CHECK(!parsed<MonthRequest>({"month"}).month);
    CHECK(parsed<SettingsRequest>({"settings", "customStepColorRed", "-0.5"}).value == "-0.5");
    CHECK(parsed<SourcesRequest>({"sources", "--order", "Watch", "Phone", "--json"}).order ==
          std::vector<std::string>{"Watch", "Phone"});
    CHECK(parsed<DoctorRequest>({"doctor", "--rebuild"}).repair == DoctorRequest::Repair::rebuildTotals);
}

TEST_CASE("whatever is no command or too many or too few arguments is wrong usage") {
    for (const auto& arguments : {std::vector<const char*>{},
                                  {"walk"},
                                  {"--json"},
                                  {"import"},
                                  {"day"},
                                  {"today", "x"},
                                  {"--now"},
                                  {"today", "--colour"},
                                  {"goal", "1", "2"},
                                  {"today", "week"}}) {
        const auto line = parse(arguments);
        REQUIRE(!line.has_value());
        CHECK(line.error().kind == ErrorKind::usage);
        CHECK(!line.error().message.isEmpty());
    }
}

TEST_CASE("help is of the command that it is asked of") {
    const auto all = parse({"--help"});
    const auto one = parse({"day", "--help"});
    REQUIRE((all.has_value() && one.has_value()));
    CHECK(std::get<Information>(all->wish).screen.contains("streaks"));
    CHECK(std::get<Information>(one->wish).screen.contains("YYYY-MM-DD"));
    CHECK(!std::get<Information>(one->wish).screen.contains("streaks"));
    const auto calendar = parse({"calendar", "--help"});
    CHECK(std::get<Information>(calendar->wish)
              .screen.contains("Usage: pedvar calendar [OPTIONS] [MONTH] [METRIC]\n"));
}

TEST_CASE("what an option refuses is told by its name, in whole sentences of our own") {
    const auto told = [](const std::vector<const char*>& arguments) {
        const auto line = parse(arguments);
        REQUIRE(!line.has_value());
        const std::string english = line.error().message.inEnglish();
        return english.substr(0, english.find(';'));
    };
    CHECK(told({"rank", "--age", "3", "--age", "4"}) == "--age is given more than once");
    CHECK(told({"--data", "a", "--data=", "today"}) == "--data is given more than once");
    CHECK(told({"widget", "--follow=maybe"}) == "--follow takes no value");
    CHECK(told({"--json=false", "today"}) == "--json takes no value");
    CHECK(told({"activity", "last", "--delete=false", "--yes"}) == "--delete takes no value");
    CHECK(told({"calendar", "2024-05", "steps", "more"}) == "\"more\" is not expected");
    CHECK(told({"sources", "--order"}) == "--order needs a value");
}

TEST_CASE("the manual page lists every kind of error, and no other") {
    std::ifstream file(PEDVAR_MANUAL);
    const std::string page{std::istreambuf_iterator(file), {}};
    const std::size_t begin = page.find("The kinds are\n") + std::string_view("The kinds are\n").size();
    std::istringstream list(page.substr(begin, page.find(".Sh", begin) - begin));
    std::vector<std::string> kinds;
    for (std::string word; list >> word;) {
        if (word != ".Cm" && word != "," && word != "." && word != "and") kinds.push_back(word);
    }
    CHECK(std::ranges::equal(kinds, caseNames<ErrorKind>));
}

TEST_CASE("help and version are JSON wherever --json stands") {
    for (const auto& arguments : {std::vector{"--json", "--version"}, std::vector{"--version", "--json"},
                                  std::vector{"today", "--help", "--json"}}) {
        const auto line = parse(arguments);
        REQUIRE(line.has_value());
        CHECK(line->global.format == OutputFormat::json);
    }
    const auto version = parse({"--version"});
    CHECK(std::get<Information>(version->wish).value == PEDVAR_VERSION);
    CHECK(std::get<Information>(version->wish).screen == "pedvar " PEDVAR_VERSION "\n");
}

TEST_CASE("commands write only where they are told to change something") {
    CHECK(isWriting(ImportRequest{}));
    CHECK(!isWriting(GoalRequest{}));
    CHECK(isWriting(GoalRequest{"8000"}));
    CHECK(!isWriting(SettingsRequest{"theme", {}}));
    CHECK(isWriting(SettingsRequest{"theme", "dark"}));
    CHECK(!isWriting(WeightRequest{}));
    CHECK(isWriting(WeightRequest{{"72", {}}}));
    CHECK(!isWriting(ProfileRequest{"age", {}}));
    CHECK(isWriting(RecapRequest{}));
    CHECK(!isWriting(RecapRequest{}, {.format = OutputFormat::json}));
    CHECK(!isWriting(RecapRequest{}, {.now = "2024-05-01"}));
    CHECK(!isWriting(SourcesRequest{}));
    CHECK(isWriting(SourcesRequest{{"Watch"}}));
    CHECK(!isWriting(DoctorRequest{}));
    CHECK(isWriting(DoctorRequest{DoctorRequest::Repair::rebuildTotals}));
    CHECK(!isWriting(parsed<ActivityRequest>({"activity", "last"})));
    CHECK(isWriting(parsed<ActivityRequest>({"activity", "last", "--type", "run"})));
    CHECK(isWriting(parsed<ActivityRequest>({"activity", "last", "--yes", "--delete"})));
}

}  // namespace
}  // namespace pedvar
