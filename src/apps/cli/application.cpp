#include "apps/cli/application.h"

#include "apps/cli/companion.h"
#include "apps/cli/engagement.h"
#include "apps/cli/health.h"
#include "apps/cli/insights.h"
#include "apps/cli/moment.h"
#include "apps/cli/water.h"
#include "insights/pace_days.h"
#include "linux/health/health_administration.h"
#include "linux/system/clocks.h"
#include "linux/system/private_folder.h"
#include "platform/language_habits.h"

#include <unistd.h>
#include <cstdlib>

namespace pedvar {
namespace {

constexpr std::string_view linuxSettingsKey = "linuxSettings";

Task<> ending(CancellableTask task) {
    co_await task.finished();
}

/// An absolute path in the environment, as it asks for folders to be given.
std::optional<std::filesystem::path> folderIn(const char* variable) {
    const char* const value = std::getenv(variable);
    if (!value || *value != '/') return std::nullopt;
    return value;
}

/// Where the data lies; none when nothing says so.
std::optional<std::filesystem::path> dataFolder(const GlobalOptions& options) {
    if (options.dataFolder) return *options.dataFolder;
    if (const auto data = folderIn("XDG_DATA_HOME")) return *data / "pedvar";
    if (const auto home = folderIn("HOME")) return *home / ".local/share/pedvar";
    return std::nullopt;
}

}  // namespace

CommandResult<std::unique_ptr<Application>> Application::open(const GlobalOptions& options, Access access) {
    if (options.now && access == Access::readWrite) {
        return usageError("--now is for looking; a command that writes refuses it.");
    }
    auto folder = dataFolder(options);
    if (!folder || folder->empty()) return usageError("Nothing says where the data lies; --data DIR does.");
    if (std::error_code error;
        std::filesystem::exists(*folder, error) && !std::filesystem::is_directory(*folder)) {
        return usageError(Phrase("\"{}\" is no folder; --data names the folder of the data.", {folder->string()}));
    }
    ProcessZone zone = processZone();
    std::unique_ptr<const Clock> clock = std::make_unique<SystemClock>();
    if (options.now) {
        const auto now = parseMoment(*options.now, *zone.rules);
        if (!now) {
            return usageError(Phrase(
                "\"{}\" is no moment; one is written like 2024-05-01, 2024-05-01T18:30 or 2024-05-01T18:30+02:00.",
                {*options.now}));
        }
        clock = std::make_unique<FixedClock>(*now);
    }
    return std::unique_ptr<Application>(
        new Application(options, std::move(*folder), std::move(zone), std::move(clock), access));
}

Application::Application(const GlobalOptions& options, std::filesystem::path folder, ProcessZone zone,
                         std::unique_ptr<const Clock> clock, Access access)
    : options_(options),
      folder_(std::move(folder)),
      access_(access),
      zone_(std::move(zone)),
      clock_(std::move(clock)),
      locale_(*zone_.rules),
      text_(catalogue_),
      defaults_(folder_, access == Access::readWrite ? SqliteDefaults::Access::readWrite
                                                     : SqliteDefaults::Access::readOnly),
      widgets_(folder_),
      settings_(defaults_, json_, locale_),
      documents_(defaults_) {}

Application::~Application() = default;

void Application::hold() {
    if (isWriting()) makePrivateFolder(folder_);  // where that fails, the first who writes tells why
    use_ = FolderUse::among(folder_);
}

void Application::finish(CancellableTask task) {
    loop_.run(ending(std::move(task)));
}

std::optional<LinuxSettings> Application::storedLinuxSettings() const {
    const auto stored = defaults_.standard().data(linuxSettingsKey);
    if (!stored) return std::nullopt;
    const auto document = json_.parse(stored->bytes);
    return document ? decodeLeniently(*document, LinuxSettings()) : std::nullopt;
}

LinuxSettings Application::linuxSettings() const {
    return storedLinuxSettings().value_or(LinuxSettings());
}

DefaultsResult Application::changeLinuxSettings(const std::function<void(LinuxSettings&)>& edit) {
    return defaults_.update([&] {
        const UserDefaults& store = defaults_.standard();
        const auto stored = storedLinuxSettings();
        LinuxSettings settings = stored.value_or(LinuxSettings());
        edit(settings);
        std::vector<DefaultsChange> changes{{&store, std::string(linuxSettingsKey), Data{*encodeJson(settings)}}};
        if (!stored) {
            if (auto kept = setAside(store, linuxSettingsKey)) changes.push_back(std::move(*kept));
        }
        return changes;
    });
}

std::string_view Application::languageCode() const {
    return names(settings_.preferences().appLanguage).code;
}

const TextCatalogue& Application::catalogue() const {
    catalogue_.speak(languageCode());
    return catalogue_;
}

const Texts& Application::text() const {
    catalogue_.speak(languageCode());
    return text_;
}

AchievementTexts Application::achievementTexts() const {
    return {catalogue(), LanguageLocale(locale_, languageCode())};
}

Screen Application::screen() const {
    const UserPreferences preferences = settings_.preferences();
    const std::string_view language = names(preferences.appLanguage).code;
    catalogue_.speak(language);
    const LanguageLocale locale(locale_, language);
    return {
        .text = text_,
        .figures = Figures(locale, preferences, text_),
        .palette = terminalBehind(STDOUT_FILENO, linuxSettings().colorOutput).palette,
        .accent = stepColor(preferences),
    };
}

SessionHistory& Application::sessions() {
    if (!sessions_) sessions_.emplace(documents_);
    return *sessions_;
}

std::optional<Date> Application::horizon() const {
    return options_.now ? std::optional(clock_->now()) : std::nullopt;
}

CommandResult<Health*> Application::health() {
    if (!health_) {
        const HealthSurroundings surroundings{loop_, *clock_, *zone_.rules, settings_, log_, horizon()};
        auto opened = std::make_unique<Health>(surroundings, folder_ / "health.sqlite");
        if (const auto sound = opened->database.verify(); !sound) return std::unexpected(errorOf(sound.error()));
        health_ = std::move(opened);
    }
    return health_.get();
}

CommandResult<Companion*> Application::companion() {
    const auto opened = health();
    if (!opened) return std::unexpected(opened.error());
    if (!companion_) {
        companion_ = std::make_unique<Companion>(
            CompanionSurroundings{loop_, *clock_, defaults_, settings_, log_, (*opened)->manager, widgets_});
    }
    return companion_.get();
}

CommandResult<Insights*> Application::insights() {
    const auto opened = health();
    if (!opened) return std::unexpected(opened.error());
    if (!insights_) {
        using enum StepPaceBaselineStore::Keeping;
        insights_ = std::make_unique<Insights>(InsightsSurroundings{
            loop_, *clock_, defaults_, json_, settings_, log_, **opened, isWriting() ? stored : inMemory});
    }
    return insights_.get();
}

CommandResult<AchievementsStore*> Application::achievements() {
    const auto opened = health();
    if (!opened) return std::unexpected(opened.error());
    if (!achievements_) {
        Health& health = **opened;
        achievements_ = std::make_unique<AchievementsStore>(loop_, *clock_, health.store, health.manager.reads(),
                                                            settings_, defaults_, log_);
        badgeNews_ = achievements_->unlocked.observe([this](const std::vector<Achievement>& found) {
            newBadges_.insert(newBadges_.end(), found.begin(), found.end());
        });
    }
    return achievements_.get();
}

CommandResult<Water*> Application::water() {
    const auto opened = health();
    if (!opened) return std::unexpected(opened.error());
    if (!water_) {
        Health& health = **opened;
        water_ = std::make_unique<Water>(WaterSurroundings{loop_, *clock_, health.store, health.manager.reads(),
                                                           defaults_, settings_, log_, widgets_, horizon()});
    }
    return water_.get();
}

Engagement& Application::engagement() {
    if (!engagement_) {
        const auto addresses = [this] {
            const LinuxSettings settings = linuxSettings();
            return StoreAddresses{settings.updateAddress.text(), settings.updatePage.text(),
                                  settings.reviewPage.text()};
        };
        engagement_ = std::make_unique<Engagement>(
            EngagementSurroundings{loop_, *clock_, json_, settings_, defaults_, log_, addresses});
    }
    return *engagement_;
}

CommandResult<void> Application::forgetChangedDays() {
    DefaultsResult forgotten;
    const auto forget = [&](const ChangedDays& changed) {
        if (const auto steps = changed.find(HKQuantityTypeIdentifierStepCount); steps != changed.end()) {
            forgotten = forgetPaceDays(defaults_, json_, settings_.calendar(), steps->second);
        }
        return forgotten.has_value();
    };
    const auto settled = HealthAdministration(health_->database).settleChangedDays(forget);
    // While another process writes, the days stay noted until somebody changes something again.
    if (!settled && settled.error().kind != StoreError::Kind::busy)
        return std::unexpected(errorOf(settled.error()));
    return commandResult(forgotten);
}

CommandResult<void> Application::refresh() {
    return loop_.run(refreshing());
}

Task<CommandResult<void>> Application::refreshing() {
    const auto opened = companion();
    if (!opened) co_return std::unexpected(opened.error());
    if (const auto forgotten = forgetChangedDays(); !forgotten) co_return forgotten;
    const auto meaning = insights();
    if (!meaning) co_return std::unexpected(meaning.error());
    const auto badges = achievements();
    if (!badges) co_return std::unexpected(badges.error());
    const auto drinks = water();
    if (!drinks) co_return std::unexpected(drinks.error());
    co_await health_->manager.ensureAuthorization();
    co_await health_->manager.refreshToday();
    co_await (*opened)->updater.finished();
    co_await (*drinks)->manager.refresh();
    co_await (*badges)->evaluate();
    const auto reading = (*meaning)->pace.refresh(health_->manager);
    if (reading) co_await reading->finished();
    co_await (*meaning)->recap.checkForRecap();
    const DefaultsResult remembered = co_await (*badges)->remember();
    co_return commandResult(remembered);
}

}  // namespace pedvar
