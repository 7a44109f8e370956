/// Asking for a rating.
#pragma once

#include "core/executor.h"
#include "core/published.h"
#include "engagement/store_addresses.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/platform_log.h"
#include "platform/user_defaults.h"
#include "platform/web_pages.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace pedvar {

/// Decides when the person is asked to rate Pedvar: on the third open, then after each "later" with the tenth
/// further one that is at least two days off, and never after the third "later" or once they have rated. Lives on
/// the main executor.
///
/// A process that ends between scheduling the pop-up and showing it leaves the pop-up scheduled: nobody is asked
/// any more, on purpose. Without a page for reviews opens are not even counted.
class RateUsManager {
public:
    static constexpr std::int64_t initialOpensRequired = 3;
    static constexpr std::int64_t subsequentOpensRequired = 10;
    static constexpr std::int64_t maxMaybeLaterCount = 3;
    static constexpr std::int64_t minimumDaysBetweenPrompts = 2;
    static constexpr double popupDelaySeconds = 5.0;

    RateUsManager(MainExecutor& executor, const Clock& clock, const SettingsStore& settings,
                  DefaultsDomains& defaults, StoreAddressSource addresses, WebPages& pages, PlatformLog& log);

    Published<bool> shouldShowPopup;

    /// Once for each time that the person opens the application.
    void appDidOpen();
    void rateNow();
    void maybeLater();

private:
    /// The opens still to go, which begin to be counted with this call where they never were.
    std::int64_t opensUntilNextPrompt();
    /// None when the person never answered "later".
    std::optional<std::int64_t> daysSinceLastPrompt() const;
    void schedulePopup();
    void endPopup();
    bool flag(std::string_view key) const;
    void store(const std::vector<DefaultsChange>& changes);
    DefaultsChange change(std::string_view key, DefaultsValue value) const;

    MainExecutor& executor_;
    const Clock& clock_;
    const SettingsStore& settings_;
    DefaultsDomains& defaults_;
    StoreAddressSource addresses_;
    WebPages& pages_;
    PlatformLog& log_;
    Timer popupWorkItem_;
};

}  // namespace pedvar
