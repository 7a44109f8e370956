/// What asks the person, and tells of updates.
#pragma once

#include "engagement/app_update_manager.h"
#include "engagement/rate_us_manager.h"
#include "linux/web/curl_url_session.h"
#include "linux/web/desktop_pages.h"

namespace pedvar {

/// What the managers are built from.
struct EngagementSurroundings {
    MainExecutor& executor;
    const Clock& clock;
    const JsonParser& json;
    const SettingsStore& settings;
    DefaultsDomains& defaults;
    PlatformLog& log;
    StoreAddressSource addresses;
};

class Engagement {
public:
    explicit Engagement(const EngagementSurroundings& with)
        : updates(with.executor, session_, with.json, with.defaults, with.addresses, pages_, with.log,
                  PEDVAR_VERSION),
          rating(with.executor, with.clock, with.settings, with.defaults, with.addresses, pages_, with.log) {}

private:
    CurlURLSession session_;
    DesktopPages pages_;

public:
    AppUpdateManager updates;
    RateUsManager rating;
};

}  // namespace pedvar
