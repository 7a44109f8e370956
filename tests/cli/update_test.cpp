#include "cli/run_pedvar.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace pedvar {
namespace {

struct Updating {
    TemporaryFolder folder;
    Program server{{"python3", PEDVAR_WEB_SERVER}};
    std::string address = "http://127.0.0.1:" + server.line() + "/";

    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--data", "data"});
        return runPedvar(folder.path(), arguments);
    }
    void ask(const std::string& page) const {
        CHECK(run({"settings", "updateAddress", address + page}).exitCode == 0);
    }
    static std::string fields(const char* latest, bool isAvailable, const char* notes, bool shouldShow) {
        const auto text = [](bool value) { return value ? "true" : "false"; };
        return std::string(R"({"currentVersion":")" PEDVAR_VERSION R"(","latestVersion":")") + latest +
               R"(","isUpdateAvailable":)" + text(isAvailable) + R"(,"releaseNotes":")" + notes +
               R"(","shouldShowUpdatePopup":)" + text(shouldShow) + "}\n";
    }
};

TEST_CASE_FIXTURE(Updating,
                  "an update is asked for, known from then on, dismissed, and shown when asked by hand") {
    CHECK(run({"update", "--json"}).output == fields("", false, "", false));
    CHECK(run({"update", "--check"}).errors ==
          "pedvar: Nobody can be asked for updates; `pedvar settings updateAddress ADDRESS` says whom.\n");
    CHECK(run({"update", "--dismiss"}).exitCode == 1);
    ask("good");
    CHECK(run({"update", "--check", "--json"}).output == fields("99.1", true, "Walks further.", true));
    CHECK(run({"update", "--json"}).output == fields("99.1", true, "Walks further.", true));
    CHECK(run({"update", "--dismiss", "--json"}).output == fields("99.1", true, "Walks further.", false));
    CHECK(run({"update"}).output == "Pedvar 99.1 is there; this is " PEDVAR_VERSION
                                    ".\n\nWalks further.\n\nYou have dismissed it.\n");
    CHECK(run({"update", "--check", "--json"}).output == fields("99.1", true, "Walks further.", true));
    ask("redirect");
    CHECK(run({"update", "--check", "--json"}).output == fields("99.1", true, "Walks further.", true));
    ask("notes");
    CHECK(run({"update", "--check"}).output.ends_with("\n\nWalks further.\n\nCounts ?[31mbetter.\n"));
    ask("old");
    CHECK(run({"update", "--check"}).output == "This is Pedvar " PEDVAR_VERSION ", the newest one.\n");
    ask("empty");
    CHECK(run({"update", "--check"}).exitCode == 0);
}

TEST_CASE_FIXTURE(Updating, "servers that answer badly fail the check and change nothing") {
    ask("good");
    run({"update", "--check"});
    for (const char* page : {"error", "missing", "nonsense", "large", "cut", "circle"}) {
        CAPTURE(page);
        ask(page);
        const Outcome outcome = run({"update", "--check"});
        CHECK(outcome.exitCode == 1);
        CHECK(outcome.errors.starts_with("pedvar: The newest version is not known: "));
        CHECK(std::ranges::count(outcome.errors, '\n') == 1);
    }
    ask("nonsense");
    CHECK(run({"update", "--check"}).errors ==
          "pedvar: The newest version is not known: The answer is no JSON.\n");
    CHECK(run({"update", "--json"}).output == fields("99.1", true, "Walks further.", true));
    CHECK(run({"settings", "updateAddress", "http://127.0.0.1:1/lookup"}).exitCode == 0);
    const Outcome nobody = run({"update", "--check", "--json"});
    CHECK(nobody.exitCode == 1);
    CHECK(nobody.output.find(R"("kind":"checkFailed")") != std::string::npos);
    CHECK(run({"settings", "updateAddress", "ftp://example.org/"}).exitCode == 2);
    CHECK(run({"settings", "updateAddress", "none"}).output.ends_with(" none\n"));
    CHECK(run({"update", "--open"}).errors ==
          "pedvar: There is no page to open; `pedvar settings updatePage ADDRESS` names one.\n");
    CHECK(run({"update", "--check", "--open"}).exitCode == 2);
}

}  // namespace
}  // namespace pedvar
