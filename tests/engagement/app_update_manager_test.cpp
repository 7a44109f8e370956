#include "engagement/app_update_manager.h"

#include "support/fake_web.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <memory>

using namespace pedvar;

namespace {

struct Updates : ManagerFixture {
    StoreAddresses addresses{
        .lookup = "https://example.org/lookup", .page = "https://example.org/app/id", .review = ""};
    FakeURLSession session;
    FakeWebPages pages;
    std::unique_ptr<AppUpdateManager> updates;

    Updates() { restart("1.9"); }
    void restart(const std::string& version) {
        updates = std::make_unique<AppUpdateManager>(
            time, session, json, defaults, [this] { return addresses; }, pages, log, version);
    }
    static std::string published(const std::string& version) {
        return R"({"resultCount":2,"results":[{"version":")" + version +
               R"(","releaseNotes":"New.","x":[]},{"version":"99"}]})";
    }
    AppUpdateManager::Outcome launch(const std::string& body, int status = 200) {
        session.answers.emplace_back(URLResponse{status, body});
        return time.run(updates->checkAtLaunch());
    }
    AppUpdateManager::Outcome byHand(const std::string& body, int status = 200) {
        session.answers.emplace_back(URLResponse{status, body});
        return time.run(updates->checkManually());
    }
};

}  // namespace

TEST_CASE("versions are compared number by number") {
    CHECK(isNewer("1.10", "1.9"));
    CHECK(!isNewer("1.9", "1.10"));
    CHECK(!isNewer("2.0", "2"));
    CHECK(!isNewer("2", "2.0.0"));
    CHECK(isNewer("2.0.0.1", "2"));
    CHECK(!isNewer("1.2.a", "1.2"));
    CHECK(isNewer("v1.2", "1.9"));  // is 2
    CHECK(!isNewer("..1..2..", "1.2"));
    CHECK(!isNewer("", ""));
    CHECK(!isNewer("0.-1", ""));
    CHECK(isNewer("+2", "1"));
    CHECK(!isNewer("99999999999999999999.1", "2"));  // no integer that fits
}

TEST_CASE_FIXTURE(Updates, "a newer version is told until it is dismissed, and again when asked for by hand") {
    CHECK(launch(published("1.10")));
    CHECK(session.asked == std::vector<std::string>{"https://example.org/lookup?id=1"});
    CHECK(updates->isUpdateAvailable);
    CHECK(updates->latestVersion.value() == "1.10");
    CHECK(updates->releaseNotes.value() == "New.");
    CHECK(updates->shouldShowUpdatePopup);
    updates->dismissUpdate();
    CHECK(!updates->shouldShowUpdatePopup);
    CHECK(std::get<bool>(*defaults.standardDomain.value("dismissed_update_1.10")));

    CHECK(launch(published("1.10")));
    CHECK(updates->isUpdateAvailable);
    CHECK(!updates->shouldShowUpdatePopup);
    CHECK(byHand(published("1.10")));
    CHECK(updates->shouldShowUpdatePopup);
    CHECK(byHand(published("1.9")));  // leaves the pop-up alone
    CHECK(!updates->isUpdateAvailable);
    CHECK(updates->shouldShowUpdatePopup);
    updates->dismissUpdate();
    CHECK(launch(published("1.11")));
    CHECK(updates->shouldShowUpdatePopup);
    CHECK(updates->openStorePage());
    CHECK(pages.opened == std::vector<std::string>{"https://example.org/app/id1"});
}

TEST_CASE_FIXTURE(Updates, "a check is under way until its answer is there, whatever it is") {
    TaskScope scope(time);
    scope.spawn([](AppUpdateManager& asked) -> Task<> { co_await asked.checkAtLaunch(); }(*updates));
    time.settle();
    CHECK(updates->isCheckingForUpdate);
    session.answers.push_back(std::unexpected(URLError{"No route to the host."}));
    session.answer();
    time.settle();
    CHECK(!updates->isCheckingForUpdate);
    CHECK(log.lines ==
          std::vector<std::string>{"AppUpdate/error: Launch update check failed: No route to the host."});

    const std::string deep(1'000'000, '[');
    for (const std::string body : {"", "<html>", "[]", "{}", R"({"results":{}})", R"({"results":[7]})",
                                   R"({"results":[{"version":3}]})", R"({"results":[{"releaseNotes":"x"}]})",
                                   R"({"results":[{"version":"3","releaseNotes":[]}]})", deep.c_str()}) {
        CAPTURE(body.substr(0, 99));
        log.lines.clear();
        CHECK(!byHand(body));
        REQUIRE(log.lines.size() == 1);
        CHECK(log.lines.front().starts_with("AppUpdate/standard: Manual update check failed: "));
        CHECK(!updates->isCheckingForUpdate);
    }
    CHECK(!byHand(published("3"), 404));
    CHECK(!updates->isUpdateAvailable);
    CHECK(!updates->shouldShowUpdatePopup);
    CHECK(trace.empty());
}

TEST_CASE_FIXTURE(Updates, "nothing published is no update, and missing notes are empty ones") {
    CHECK(launch(published("3")));
    CHECK(launch(R"({"results":[]})"));
    CHECK(!updates->isUpdateAvailable);
    CHECK(!updates->isCheckingForUpdate);
    CHECK(updates->shouldShowUpdatePopup);
    CHECK(byHand(R"({"results":[{"version":"2"}]})"));
    CHECK(updates->releaseNotes.value().empty());
    CHECK(updates->isUpdateAvailable);
}

TEST_CASE_FIXTURE(Updates, "without an address nothing is asked, and only a check by hand is told so") {
    addresses = {};
    const auto outcome = time.run(updates->checkManually());
    REQUIRE(!outcome);
    CHECK(outcome.error().kind == UpdateCheckFailure::Kind::noAddress);
    CHECK(session.asked.empty());
    CHECK(!updates->isCheckingForUpdate);
    CHECK(log.lines.empty());
    CHECK(!updates->openStorePage());
}

TEST_CASE_FIXTURE(Updates, "the next process knows the last answer, as a launch would tell it") {
    CHECK(byHand(published("2.4.1")));
    restart("1.9");
    updates->recallLastCheck();
    CHECK(updates->shouldShowUpdatePopup);
    updates->dismissUpdate();
    restart("1.9");
    CHECK(!updates->isUpdateAvailable);
    updates->recallLastCheck();
    CHECK(updates->isUpdateAvailable);
    CHECK(!updates->shouldShowUpdatePopup);
    CHECK(updates->latestVersion.value() == "2.4.1");
    restart("2.4.1");  // installed meanwhile
    updates->recallLastCheck();
    CHECK(!updates->isUpdateAvailable);
    CHECK(byHand(R"({"results":[]})"));  // taken back
    restart("1.9");
    updates->recallLastCheck();
    CHECK(!updates->isUpdateAvailable);
}
