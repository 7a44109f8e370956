#include "hydration/hydration_app_group.h"
#include "support/fake_companions.h"
#include "support/fake_defaults.h"
#include "support/fake_log.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

namespace pedvar {
namespace {

struct WaterWidget {
    std::vector<std::string> trace;
    FakeDefaults defaults{trace};
    FakeWidgetCenter widgets{trace};
    FakeLog log;
    VirtualTime time{Date(Seconds(700'000'000))};
    HydrationAppGroup group{defaults, time, widgets, log};
    HydrationSettings settings = defaultHydrationSettings();
};

TEST_CASE_FIXTURE(WaterWidget, "the snapshot is written in its order, with figures that a widget can divide by") {
    settings.volumeUnit = VolumeUnit::fluidOunces;
    group.updateWidgetSnapshot(-3, 0, settings);
    CHECK(trace == std::vector<std::string>{"shared hydrationTodayMilliliters", "shared hydrationGoalMilliliters",
                                            "shared hydrationCachedDay", "shared hydrationVolumeUnit",
                                            "shared hydrationDefaultContainerID", "shared hydrationContainers",
                                            "reload"});
    const FakeDomain& suite = defaults.sharedDomain;
    CHECK(suite.real("hydrationTodayMilliliters") == 0);
    CHECK(suite.real("hydrationGoalMilliliters") == 1);
    CHECK(suite.value("hydrationCachedDay") == DefaultsValue(time.now()));
    CHECK(suite.text("hydrationVolumeUnit") == "floz");
    CHECK(suite.text("hydrationDefaultContainerID") == settings.containers[0].id.text());
    CHECK(suite.data("hydrationContainers")
              .value()
              .bytes.contains("\"milliliters\":200,\"drinkType\":\"coffee\",\"label\":\"Cup\"}"));

    settings.defaultContainerID.reset();
    settings.volumeUnit = VolumeUnit::milliliters;
    settings.containers[0].milliliters = std::nan("");
    group.updateWidgetSnapshot(1250.5, 2000, settings);
    CHECK(suite.real("hydrationTodayMilliliters") == 1250.5);
    CHECK(suite.text("hydrationVolumeUnit") == "ml");
    CHECK(!suite.value("hydrationDefaultContainerID"));
    CHECK(suite.data("hydrationContainers").value().bytes.contains("\"milliliters\":250,"));  // as it was
}

TEST_CASE_FIXTURE(WaterWidget,
                  "a suite that cannot be opened is not written, and the widgets are reloaded anyway") {
    defaults.isSharedOpen = false;
    group.updateWidgetSnapshot(1, 2, settings);
    CHECK(trace == std::vector<std::string>{"reload"});
    CHECK(group.lastAmountMilliliters() == 0);
}

TEST_CASE_FIXTURE(WaterWidget, "the last amount is a number above 0, or 0") {
    const auto last = [&](std::optional<DefaultsValue> stored) {
        defaults.sharedDomain.values.clear();
        if (stored) defaults.sharedDomain.values.emplace("hydrationLastAmountMilliliters", *stored);
        return group.lastAmountMilliliters();
    };
    CHECK(last(std::nullopt) == 0);
    CHECK(last("250") == 0);
    CHECK(last(true) == 0);
    CHECK(last(-250.0) == 0);
    CHECK(last(std::numeric_limits<double>::quiet_NaN()) == 0);
    CHECK(last(std::int64_t{250}) == 250);
    group.saveLastAmount(330.5);
    CHECK(group.lastAmountMilliliters() == 330.5);
}

}  // namespace
}  // namespace pedvar
