#include "insights/pace_days.h"

#include <algorithm>
#include <optional>
#include <string>

namespace pedvar {

namespace {

constexpr std::string_view paceDaysKey = "stepPaceBaselineDays";

// 1970 to 9999: a stored moment outside is the start of no day that calendars know.
constexpr Interval sensibleDates{dateFromUnix(0), dateFromUnix(253'402'300'800)};

std::optional<std::vector<PaceDay>> storedDays(const DefaultsDomains& defaults, const JsonParser& json) {
    const auto data = defaults.standard().data(paceDaysKey);
    const auto document = data ? json.parse(data->bytes).value_or(JsonValue{}) : JsonValue{};
    return decodeJson<std::vector<PaceDay>>(document);
}

bool reachesInto(const Interval& day, const Interval& touched) {
    return day.contains(touched.start) || (touched.start < day.start && day.start < touched.end);
}

}  // namespace

std::vector<PaceDay> loadPaceDays(const DefaultsDomains& defaults, const JsonParser& json) {
    return storedDays(defaults, json).value_or(std::vector<PaceDay>());
}

std::size_t dropTouched(std::vector<PaceDay>& days, const Calendar& calendar, std::span<const Interval> touched) {
    return std::erase_if(days, [&](const PaceDay& stored) {
        if (!sensibleDates.contains(stored.date)) return true;
        const Interval day = calendar.interval(calendar.day(stored.date));
        return std::ranges::any_of(touched, [&](const Interval& interval) { return reachesInto(day, interval); });
    });
}

namespace {

std::vector<DefaultsChange> replacing(const DefaultsDomains& defaults, const JsonParser& json,
                                      const std::vector<PaceDay>& days) {
    auto document = encodeJson(days);
    if (!document) return {};
    const UserDefaults& store = defaults.standard();
    std::vector<DefaultsChange> changes{{&store, std::string(paceDaysKey), Data{std::move(*document)}}};
    if (!storedDays(defaults, json)) {
        if (auto kept = setAside(store, paceDaysKey)) changes.push_back(std::move(*kept));
    }
    return changes;
}

/// The stored days without those that were touched; none when all of them stay.
std::optional<std::vector<PaceDay>> untouched(const DefaultsDomains& defaults, const JsonParser& json,
                                              const Calendar& calendar, std::span<const Interval> touched) {
    auto days = storedDays(defaults, json);
    if (!days) return std::nullopt;
    return dropTouched(*days, calendar, touched) == 0 ? std::nullopt : std::move(days);
}

}  // namespace

DefaultsResult savePaceDays(DefaultsDomains& defaults, const JsonParser& json, const std::vector<PaceDay>& days) {
    return defaults.write(replacing(defaults, json, days));
}

DefaultsResult forgetPaceDays(DefaultsDomains& defaults, const JsonParser& json, const Calendar& calendar,
                              std::span<const Interval> touched) {
    if (!untouched(defaults, json, calendar, touched)) return {};
    return defaults.update([&] {
        const auto days = untouched(defaults, json, calendar, touched);
        return days ? replacing(defaults, json, *days) : std::vector<DefaultsChange>();
    });
}

}  // namespace pedvar
