#include "core/async.h"
#include "linux/system/event_loop.h"
#include "linux/web/curl_url_session.h"
#include "support/program.h"

#include <doctest/doctest.h>

#include <chrono>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

using Answer = std::expected<URLResponse, URLError>;

struct Web {
    Program server{{"python3", PEDVAR_WEB_SERVER}};
    std::string address = "http://127.0.0.1:" + server.line() + "/";
    EventLoop loop;
    CurlURLSession session;

    static Task<Answer> fetched(EventLoop& executor, URLSession& from, URLRequest request) {
        Completion<Answer> answer(executor);
        from.data(std::move(request), answer.resolver());
        co_return co_await answer;
    }
    Answer fetch(const std::string& path, Seconds longestTime = 10s) {
        return loop.run(fetched(loop, session, {address + path, longestTime}));
    }
    std::string problem(const std::string& path, Seconds longestTime = 10s) {
        const Answer answer = fetch(path, longestTime);
        return answer ? "none" : answer.error().localizedDescription.inEnglish();
    }
};

const std::string answerOfServer =
    R"({"resultCount":1,"results":[{"version":"99.1","releaseNotes":"Walks further."}]})";

}  // namespace

TEST_CASE_FIXTURE(Web, "a document is fetched with its status, through redirects of the web only") {
    for (const char* path : {"good?id=1", "redirect"}) {
        const Answer answer = fetch(path);
        REQUIRE(answer);
        CHECK(answer->statusCode == 200);
        CHECK(answer->body == answerOfServer);
    }
    const Answer failed = fetch("error");
    REQUIRE(failed);
    CHECK(failed->statusCode == 500);
    CHECK(problem("circle").find("redirects") != std::string::npos);
    CHECK(problem("elsewhere") == "Unsupported protocol");
}

TEST_CASE_FIXTURE(Web, "what is too long, too slow or cut off is no answer") {
    CHECK(problem("large") == "The answer is longer than 1048576 bytes.");
    CHECK(problem("endless") == "The answer is longer than 1048576 bytes.");
    CHECK(problem("slow", 0.3s) == "There is no whole answer after 0.3 seconds.");
    CHECK(problem("silent", 0.3s) == "There is no whole answer after 0.3 seconds.");
    CHECK(problem("cut").find("partial") != std::string::npos);
}

TEST_CASE_FIXTURE(Web, "nobody there, and an address of something else, are told") {
    address = "http://127.0.0.1:1/";
    CHECK(problem("good").find("onnect") != std::string::npos);
    address = "file:///etc/";
    CHECK(problem("hostname") == "Unsupported protocol");
    address = "https://";
    CHECK(problem("") != "none");
}

TEST_CASE_FIXTURE(Web, "a session that ends breaks off what is under way") {
    std::optional<Answer> answer;
    {
        CurlURLSession shortLived;
        shortLived.data({address + "silent", 60s}, [&](Answer told) { answer = std::move(told); });
    }
    REQUIRE(answer);
    REQUIRE(!*answer);
    CHECK(answer->error().localizedDescription.inEnglish() == "The request was broken off.");
}
