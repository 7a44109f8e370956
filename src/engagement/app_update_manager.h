/// Whether there is a newer Pedvar.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "core/record.h"
#include "engagement/store_addresses.h"
#include "platform/json_parser.h"
#include "platform/phrase.h"
#include "platform/platform_log.h"
#include "platform/url_session.h"
#include "platform/user_defaults.h"
#include "platform/web_pages.h"

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// Whether version `a` is newer than `b`. Their numbers between dots are compared one by one, a missing one as 0;
/// what is no integer is left out, so that "v1.2" is 2.
bool isNewer(std::string_view a, std::string_view b);

/// A published version.
struct PublishedVersion {
    std::string version;
    std::optional<std::string> releaseNotes;

    using Fields = FieldList<&PublishedVersion::version, &PublishedVersion::releaseNotes>;
    bool operator==(const PublishedVersion&) const = default;
};
static_assert(isComplete<PublishedVersion>);

/// Why a check knows nothing.
struct UpdateCheckFailure {
    enum class Kind { noAddress, failed };
    Kind kind = Kind::failed;
    Phrase message;  // of what failed
};

/// Asks the place that publishes Pedvar for the newest version. A version that the person dismissed is no news at
/// launch, and is shown again by a check that they start themselves. Lives on the main executor.
class AppUpdateManager {
public:
    static constexpr std::string_view appStoreID = "1";  // the look-up service is Pedvar's own

    AppUpdateManager(MainExecutor& executor, URLSession& session, const JsonParser& json,
                     DefaultsDomains& defaults, StoreAddressSource addresses, WebPages& pages, PlatformLog& log,
                     std::string runningVersion);

    Published<bool> isUpdateAvailable;
    Published<std::string> latestVersion;  // of the last check that was answered
    Published<std::string> releaseNotes;
    Published<bool> shouldShowUpdatePopup;
    Published<bool> isCheckingForUpdate;
    const std::string currentVersion;

    using Outcome = std::expected<void, UpdateCheckFailure>;
    /// Without an address, and when nothing is published, everything stays as it is but `isUpdateAvailable`.
    Task<Outcome> checkAtLaunch();
    Task<Outcome> checkManually();

    /// Publishes what the last check that was answered has found, also one of an earlier process, the way a launch
    /// would.
    void recallLastCheck();

    void dismissUpdate();
    /// False when the page has no address or there is no browser.
    bool openStorePage();

private:
    enum class Occasion { launch, manual };

    Task<Outcome> check(Occasion occasion);
    /// The first record of the answer; none when nothing is published.
    Task<std::expected<std::optional<PublishedVersion>, UpdateCheckFailure>> lookUp();
    void apply(const PublishedVersion& published, Occasion occasion);
    void remember(const PublishedVersion& published);
    bool isDismissed(std::string_view version) const;
    void store(std::string key, std::optional<DefaultsValue> value);

    MainExecutor& executor_;
    URLSession& session_;
    const JsonParser& json_;
    DefaultsDomains& defaults_;
    StoreAddressSource addresses_;
    WebPages& pages_;
    PlatformLog& log_;
};

}  // namespace pedvar
