#include "engagement/app_update_manager.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>
#include <vector>

namespace pedvar {

namespace {

constexpr std::string_view publishedVersionKey = "publishedVersion";
constexpr int firstFailingStatus = 300;  // redirects are followed, so one that is left leads nowhere

std::vector<std::int64_t> numbersOf(std::string_view version) {
    std::vector<std::int64_t> numbers;
    while (!version.empty()) {
        const std::size_t length = std::min(version.find('.'), version.size());
        std::string_view piece = version.substr(0, length);
        version.remove_prefix(std::min(length + 1, version.size()));
        if (piece.starts_with('+') && piece.size() > 1 && piece[1] != '-') piece.remove_prefix(1);
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(piece.data(), piece.data() + piece.size(), number);
        if (error == std::errc{} && end == piece.data() + piece.size()) numbers.push_back(number);
    }
    return numbers;
}

std::string dismissedKey(std::string_view version) {
    return "dismissed_update_" + std::string(version);
}

std::unexpected<UpdateCheckFailure> failure(Phrase message) {
    return std::unexpected(UpdateCheckFailure{UpdateCheckFailure::Kind::failed, std::move(message)});
}

/// The first record of an answer; none of an empty one.
std::expected<std::optional<PublishedVersion>, UpdateCheckFailure> firstResult(const JsonValue& answer) {
    const JsonValue* const results = answer.member("results");
    const JsonArray* const records = results ? results->as<JsonArray>() : nullptr;
    if (!records) return failure(Phrase("The answer has no list \"results\"."));
    if (records->empty()) return std::nullopt;
    auto published = decodeJson<PublishedVersion>(records->front());
    if (!published || published->version.empty()) return failure(Phrase("The answer names no version."));
    return published;
}

}  // namespace

bool isNewer(std::string_view a, std::string_view b) {
    auto first = numbersOf(a);
    auto second = numbersOf(b);
    const std::size_t length = std::max(first.size(), second.size());
    first.resize(length);
    second.resize(length);
    return first > second;
}

AppUpdateManager::AppUpdateManager(MainExecutor& executor, URLSession& session, const JsonParser& json,
                                   DefaultsDomains& defaults, StoreAddressSource addresses, WebPages& pages,
                                   PlatformLog& log, std::string runningVersion)
    : currentVersion(std::move(runningVersion)),
      executor_(executor),
      session_(session),
      json_(json),
      defaults_(defaults),
      addresses_(std::move(addresses)),
      pages_(pages),
      log_(log) {}

void AppUpdateManager::recallLastCheck() {
    const auto stored = defaults_.standard().data(publishedVersionKey);
    const auto document = stored ? json_.parse(stored->bytes) : std::unexpected(std::string());
    const auto published = document ? decodeJson<PublishedVersion>(*document) : std::nullopt;
    if (published) apply(*published, Occasion::launch);
}

Task<AppUpdateManager::Outcome> AppUpdateManager::checkAtLaunch() {
    return check(Occasion::launch);
}

Task<AppUpdateManager::Outcome> AppUpdateManager::checkManually() {
    return check(Occasion::manual);
}

Task<AppUpdateManager::Outcome> AppUpdateManager::check(Occasion occasion) {
    isCheckingForUpdate = true;
    auto found = co_await lookUp();
    if (!found) {
        isCheckingForUpdate = false;
        const bool isLaunch = occasion == Occasion::launch;
        if (found.error().kind == UpdateCheckFailure::Kind::failed) {
            // Whoever checks by hand is told of it beside the log.
            log_.log(logSubsystem, "AppUpdate", isLaunch ? LogLevel::error : LogLevel::standard,
                     (isLaunch ? "Launch update check failed: " : "Manual update check failed: ") +
                         found.error().message.inEnglish());
        }
        co_return std::unexpected(std::move(found.error()));
    }
    if (*found) {
        apply(**found, occasion);
        remember(**found);
    } else {
        isUpdateAvailable = false;
        isCheckingForUpdate = false;
        store(std::string(publishedVersionKey), std::nullopt);
    }
    co_return Outcome();
}

Task<std::expected<std::optional<PublishedVersion>, UpdateCheckFailure>> AppUpdateManager::lookUp() {
    const std::string address = addresses_().lookup;
    if (address.empty()) {
        co_return std::unexpected(UpdateCheckFailure{UpdateCheckFailure::Kind::noAddress, {}});
    }
    Completion<std::expected<URLResponse, URLError>> answer(executor_);
    URLRequest request{withQuery(address, "id", appStoreID)};
    session_.data(std::move(request), answer.resolver());
    const auto response = co_await answer;
    if (!response) co_return failure(response.error().localizedDescription);
    if (response->statusCode >= firstFailingStatus) {
        co_return failure(Phrase("The server answers with status {}.", {std::to_string(response->statusCode)}));
    }
    const auto document = json_.parse(response->body);
    if (!document) co_return failure(Phrase("The answer is no JSON."));
    co_return firstResult(*document);
}

void AppUpdateManager::apply(const PublishedVersion& published, Occasion occasion) {
    latestVersion = published.version;
    releaseNotes = published.releaseNotes.value_or("");
    isUpdateAvailable = isNewer(published.version, currentVersion);
    isCheckingForUpdate = false;
    if (!isUpdateAvailable) return;
    if (occasion == Occasion::manual || !isDismissed(published.version)) shouldShowUpdatePopup = true;
}

void AppUpdateManager::remember(const PublishedVersion& published) {
    const Data document{*encodeJson(published)};
    if (defaults_.standard().data(publishedVersionKey) != document) {
        store(std::string(publishedVersionKey), document);
    }
}

bool AppUpdateManager::isDismissed(std::string_view version) const {
    const auto stored = defaults_.standard().value(dismissedKey(version));
    const bool* const value = stored ? std::get_if<bool>(&*stored) : nullptr;
    return value && *value;
}

void AppUpdateManager::dismissUpdate() {
    shouldShowUpdatePopup = false;
    store(dismissedKey(latestVersion.value()), true);
}

bool AppUpdateManager::openStorePage() {
    const std::string page = addresses_().page;
    return !page.empty() && pages_.open(page + std::string(appStoreID));
}

void AppUpdateManager::store(std::string key, std::optional<DefaultsValue> value) {
    const auto result = defaults_.write({{&defaults_.standard(), std::move(key), std::move(value)}});
    if (!result) log_.log(logSubsystem, "AppUpdate", LogLevel::error, result.error().message.inEnglish());
}

}  // namespace pedvar
