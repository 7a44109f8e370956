/// Reloads of widgets that run as processes of their own.
#pragma once

#include "core/date.h"
#include "platform/user_defaults.h"
#include "platform/widget_center.h"

#include <expected>
#include <filesystem>
#include <optional>

namespace pedvar {

/// Reaches every process that follows the suite of one data folder. Followers watch an empty file; a reload opens
/// it for writing and closes it, which writes nothing. Where nobody ever followed there is no such file.
class FollowedWidgets : public WidgetCenter {
public:
    explicit FollowedWidgets(const std::filesystem::path& folder);

    void reloadAllTimelines() override;

private:
    std::filesystem::path bell_;
};

/// Waits for reloads. None gets lost from the construction on: one that comes while nobody waits ends the next
/// wait.
class WidgetReloads {
public:
    /// Makes the folder and the watched file where they are missing.
    static std::expected<WidgetReloads, DefaultsError> of(const std::filesystem::path& folder);

    WidgetReloads(WidgetReloads&& other) noexcept;
    WidgetReloads& operator=(WidgetReloads&&) = delete;
    ~WidgetReloads();

    enum class Wake { reload, time, readerGone };
    /// Waits for a reload, for `time` by the machine's clock, however that is set meanwhile, or until nobody reads
    /// from the pipe `output` any more. Several reloads before it end one wait.
    std::expected<Wake, DefaultsError> wait(Date time, int output);

private:
    WidgetReloads(std::filesystem::path folder, int events, int timer)
        : folder_(std::move(folder)), events_(events), timer_(timer) {}

    /// Also when the folder was replaced by another one.
    std::optional<DefaultsError> watch();
    DefaultsError failure(int error) const;
    void dropEvents();

    std::filesystem::path folder_;
    int events_;
    int timer_;
};

}  // namespace pedvar
