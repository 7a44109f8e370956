/// The program's objects: adapters first, then managers.
#pragma once

#include "achievements/achievement_catalogue.h"
#include "achievements/achievements_store.h"
#include "apps/cli/command_line.h"
#include "apps/cli/error.h"
#include "apps/cli/linux_settings.h"
#include "apps/cli/screen.h"
#include "health/settings_store.h"
#include "linux/backup/data_folder.h"
#include "linux/system/absent_services.h"
#include "linux/system/event_loop.h"
#include "linux/system/gettext_texts.h"
#include "linux/system/glibc_locale.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/process_zone.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/sqlite_document_parts.h"
#include "linux/system/system_log.h"
#include "linux/system/widget_reloads.h"
#include "platform/clock.h"
#include "recording/session_history.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

class Companion;
class Engagement;
class Health;
struct Insights;
class Water;

/// Whether a command only looks. Then nothing is written, not even the folder of the data.
enum class Access { readOnly, readWrite };

/// What commands are made of. The health store and its managers are built when a command first asks for them.
class Application {
public:
    /// Refuses a moment that is none, and another moment than the present for a command that writes.
    static CommandResult<std::unique_ptr<Application>> open(const GlobalOptions& options, Access access);
    ~Application();

    const GlobalOptions& options() const { return options_; }
    /// Lets nobody put another folder in the place of this one while the application lives. One that writes makes
    /// it where there is none.
    void hold();

    bool isWriting() const { return access_ == Access::readWrite; }
    /// Whether things are looked at from another moment than the present.
    bool looksFromElsewhere() const { return options_.now.has_value(); }
    bool wantsJson() const { return options_.format == OutputFormat::json; }
    const std::filesystem::path& folder() const { return folder_; }
    /// In the language that the preferences name now, so that a change is followed while the program runs. Ask
    /// anew for each thing that is said.
    const Texts& text() const;
    const TextCatalogue& catalogue() const;
    /// The language that the preferences name ("de"); empty for the system's.
    std::string_view languageCode() const;
    const Clock& clock() const { return *clock_; }
    EventLoop& loop() { return loop_; }
    const Locale& locale() const { return locale_; }
    const ZoneRules& zone() const { return *zone_.rules; }
    PlatformLog& log() { return log_; }
    SqliteDefaults& defaults() { return defaults_; }
    DocumentParts& documents() { return documents_; }
    const JsonParser& json() const { return json_; }
    WidgetCenter& widgets() { return widgets_; }
    SettingsStore& settings() { return settings_; }
    Calendar calendar() const { return settings_.calendar(); }
    Day today() const { return settings_.calendar().day(clock_->now()); }

    LinuxSettings linuxSettings() const;
    DefaultsResult changeLinuxSettings(const std::function<void(LinuxSettings&)>& edit);

    /// Runs until a load has ended.
    void finish(CancellableTask task);

    /// What is odd about the surroundings, for people.
    const std::optional<Phrase>& warning() const { return zone_.warning; }

    /// How standard output shows things, by the stored preferences.
    Screen screen() const;

    /// The recorded activities.
    SessionHistory& sessions();

    /// The health store with its managers, for reading.
    CommandResult<Health*> health();

    /// The managers that carry changes on to widgets and watch, for commands that write.
    CommandResult<Companion*> companion();

    /// The managers of what the days mean. Only a command that writes lets them store what they have read.
    CommandResult<Insights*> insights();

    /// The badges as they are stored.
    CommandResult<AchievementsStore*> achievements();
    AchievementTexts achievementTexts() const;
    /// Those that refreshes found new.
    const std::vector<Achievement>& newBadges() const { return newBadges_; }

    /// The manager of drinks with what it needs.
    CommandResult<Water*> water();

    /// What asks the person, and tells of updates.
    Engagement& engagement();

    /// What follows each change: what was derived from days that have changed since is forgotten; today's totals,
    /// badges, the usual day and the suite that widgets read are made anew.
    CommandResult<void> refresh();
    Task<CommandResult<void>> refreshing();

private:
    Application(const GlobalOptions& options, std::filesystem::path folder, ProcessZone zone,
                std::unique_ptr<const Clock> clock, Access access);

    /// Where looking from another moment ends.
    std::optional<Date> horizon() const;
    CommandResult<void> forgetChangedDays();
    std::optional<LinuxSettings> storedLinuxSettings() const;

    GlobalOptions options_;
    std::filesystem::path folder_;
    std::optional<FolderUse> use_;
    Access access_;
    ProcessZone zone_;
    std::unique_ptr<const Clock> clock_;
    GlibcLocale locale_;
    mutable GettextTexts catalogue_;  // follows the preferences
    Texts text_;
    NlohmannJsonParser json_;
    SystemLog log_;
    EventLoop loop_;
    SqliteDefaults defaults_;
    FollowedWidgets widgets_;
    SettingsStore settings_;
    SqliteDocumentParts documents_;
    std::optional<SessionHistory> sessions_;  // read when first asked for
    std::unique_ptr<Health> health_;
    std::unique_ptr<Companion> companion_;
    std::unique_ptr<Insights> insights_;
    std::unique_ptr<AchievementsStore> achievements_;
    std::unique_ptr<Water> water_;
    std::unique_ptr<Engagement> engagement_;
    std::vector<Achievement> newBadges_;
    Subscription badgeNews_;
};

}  // namespace pedvar
