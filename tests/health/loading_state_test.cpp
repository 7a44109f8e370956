#include "health/loading_state.h"

#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <optional>

using namespace pedvar;
using namespace std::chrono_literals;

TEST_CASE("the indicator shows for loads that last longer than 0.4 s only") {
    VirtualTime time;
    LoadingState loading(time);
    bool hasShown = false;
    const auto subscription = loading.showLoadingIndicator.observe([&](bool shown) { hasShown |= shown; });
    std::optional load(loading.begin());
    CHECK(loading.isLoadingData);
    time.advance(300ms);
    load.reset();
    CHECK(!loading.isLoadingData);
    time.advance(10s);
    CHECK(!hasShown);

    load.emplace(loading.begin());
    time.advance(399ms);
    std::optional second(loading.begin());  // starts no clock of its own
    time.advance(1ms);
    CHECK(loading.showLoadingIndicator);
    load.reset();
    CHECK(loading.showLoadingIndicator);
    second.reset();
    CHECK(!loading.showLoadingIndicator);
    CHECK(loading.loadingCount() == 0);
}

TEST_CASE("a stuck load is cleared after 6 s, and its late end takes nothing from others") {
    VirtualTime time;
    LoadingState loading(time);
    std::optional stuck(loading.begin());
    time.advance(5999ms);
    CHECK(loading.isLoadingData);
    time.advance(1ms);
    CHECK(!loading.isLoadingData);
    CHECK(!loading.showLoadingIndicator);
    CHECK(loading.loadingCount() == 0);
    stuck.reset();
    CHECK(loading.loadingCount() == 0);

    const auto next = loading.begin();
    time.advance(400ms);
    CHECK(loading.showLoadingIndicator);
    time.advance(5600ms);
    CHECK(!loading.isLoadingData);
}
