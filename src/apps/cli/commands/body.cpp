#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"
#include "apps/cli/moment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace pedvar {
namespace {

struct NamedUnit {
    std::string_view name;
    double factor;  // one of it in the unit in which amounts are kept
};

/// What is different between weight and height.
struct Measure {
    std::array<NamedUnit, 2>
        units;               // the first one is that of documents; people who weigh in pounds use the second
    double lowest, highest;  // in the first unit; nobody is outside, but "1.80" metres are
    std::string (Figures::*shown)(double) const;
    HKUnit unit;
};

constexpr Measure weightMeasure{
    {{{"kg", 1}, {"lb", kilogramsPerPound}}}, 1, highestWeight, &Figures::weight, HKUnit::kilogram()};
constexpr Measure heightMeasure{
    {{{"cm", 1}, {"in", centimetersPerInch}}}, 30, 300, &Figures::height, HKUnit::centimeter()};

struct Reading {
    Date moment;
    double value = 0;  // in the measure's first unit
    std::string source;
};

/// The typed amount in the measure's first unit.
CommandResult<double> amountOf(const BodyRequest& request, const Measure& measure, Application& application) {
    const Texts& text = application.text();
    const auto [metric, customary] = measure.units;
    const bool prefersCustomary = application.settings().preferences().weightUnit == WeightUnit::pounds;
    const std::string_view unit = request.unit ? *request.unit : prefersCustomary ? customary.name : metric.name;
    if (unit != metric.name && unit != customary.name) {
        return usageError(text("\"{}\" is no unit here; valid: {}, {}.", unit, metric.name, customary.name));
    }
    const double factor = unit == metric.name ? metric.factor : customary.factor;
    const auto number = numberNamed(*request.value);
    const double amount = number.value_or(0) * factor;
    if (measure.lowest <= amount && amount <= measure.highest) return amount;
    const Figures figures = application.screen().figures;
    const std::string lowest = figures.number(std::ceil(measure.lowest / factor), 0);
    const std::string highest = figures.number(std::floor(measure.highest / factor), 0);
    if (!number) {
        return usageError(text("\"{0}\" is no number like 72.5; valid: {1} to {2} {3}.", harmless(*request.value),
                               lowest, highest, unit));
    }
    return usageError(
        text("\"{0}\" is out of range; valid: {1} to {2} {3}.", harmless(*request.value), lowest, highest, unit));
}

/// Stores a sample of this moment. Whatever keeps the store from being written is told first.
CommandResult<void> save(double amount, const Measure& measure, Application& application, Health& health) {
    const auto writable = commandResult(health.database.connectForWriting());
    if (!writable) return std::unexpected(writable.error());
    BodyMetrics& body = health.manager.body();
    const bool isSaved =
        application.loop().run(measure.unit.dimension == Dimension::mass ? body.saveBodyMassToHealthKit(amount)
                                                                         : body.saveHeightToHealthKit(amount));
    if (isSaved) return {};
    return std::unexpected(
        CommandError{ErrorKind::failed, application.text()("The amount could not be stored; the log says why.")});
}

/// All readings up to now, oldest first.
std::vector<Reading> readHistory(const Measure& measure, Application& application, BodyMetrics& body) {
    const Date longAgo = application.settings().calendar().start(Day(std::chrono::year(1900) / 1 / 1));
    const Date now = application.clock().now() + std::chrono::seconds(1);  // one of this moment included
    const auto samples =
        application.loop().run(measure.unit.dimension == Dimension::mass ? body.fetchWeightReadings(longAgo, now)
                                                                         : body.fetchHeightReadings(longAgo, now));
    std::vector<Reading> readings;
    for (const HKQuantitySample& sample : samples) {
        readings.push_back({sample.end, sample.quantity.doubleValue(measure.unit), sample.source.name});
    }
    return readings;
}

JsonObject document(std::optional<double> current, const Measure& measure, const std::vector<Reading>& readings,
                    const Calendar& calendar) {
    JsonArray history;
    for (const Reading& reading : readings) {
        history.push_back({JsonObject{{"date", {isoText(reading.moment, calendar)}},
                                      {"value", {reading.value}},
                                      {"source", {reading.source}}}});
    }
    return {{"current", current ? JsonValue{*current} : JsonValue{}},
            {"unit", {std::string(measure.units[0].name)}},
            {"history", {std::move(history)}}};
}

/// The newest readings, one line each, with a point between the lowest and the highest of them.
std::string historyView(std::span<const Reading> readings, const Measure& measure, const Calendar& calendar,
                        const Screen& screen) {
    constexpr std::size_t mostLines = 20, plotWidth = 42;
    if (readings.size() > mostLines) readings = readings.last(mostLines);
    const auto [lowest, highest] = std::ranges::minmax_element(readings, {}, &Reading::value);
    std::string result;
    for (const Reading& reading : readings) {
        const double range = highest->value - lowest->value;
        const double share = range > 0 ? (reading.value - lowest->value) / range : 0.5;
        const auto place = static_cast<std::size_t>(std::round(share * (plotWidth - 1)));
        std::string before, behind;
        for (std::size_t i = 0; i < place; ++i) before += "·";
        for (std::size_t i = place + 1; i < plotWidth; ++i) behind += "·";
        result += leftAligned(screen.figures.date(calendar.day(reading.moment)), 20) +
                  rightAligned((screen.figures.*measure.shown)(reading.value), 11) + "   " + screen.faint(before) +
                  screen.accented("●") + screen.faint(behind) + "\n";
    }
    return result;
}

std::string view(const Phrase& title, std::optional<double> current, const Measure& measure,
                 const std::vector<Reading>& readings, Application& application) {
    const Screen screen = application.screen();
    const auto shown = [&](double value) { return (screen.figures.*measure.shown)(value); };
    std::vector<std::pair<std::string, std::string>> lines{
        {screen.text.of(title), current ? shown(*current) : screen.text("not known yet")}};
    if (measure.unit.dimension == Dimension::mass) {
        const auto target = application.settings().personalMetrics().targetWeight;
        if (target) lines.emplace_back(screen.text("Target"), shown(*target));
    }
    std::string result = labelled(lines);
    if (readings.empty()) return result;
    return result + "\n" + historyView(readings, measure, application.settings().calendar(), screen);
}

CommandResult<Report> answer(const BodyRequest& request, const Phrase& title, const Measure& measure,
                             Published<std::optional<double>> BodyMetrics::* current, Application& application) {
    std::optional<double> amount;
    if (request.value) {
        const auto typed = amountOf(request, measure, application);
        if (!typed) return std::unexpected(typed.error());
        amount = *typed;
    }
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    if (amount) {
        if (const auto saved = save(*amount, measure, application, **health); !saved) {
            return std::unexpected(saved.error());
        }
    }
    BodyMetrics& body = (*health)->manager.body();
    application.loop().run(body.loadBodyMetrics());
    const std::optional<double> newest = body.*current;
    const auto readings = readHistory(measure, application, body);
    if (!application.wantsJson()) return Report{view(title, newest, measure, readings, application)};
    return Report{document(newest, measure, readings, application.settings().calendar())};
}

}  // namespace

CommandResult<Report> run(const WeightRequest& request, Application& application) {
    return answer(request, Phrase("Weight"), weightMeasure, &BodyMetrics::currentWeight, application);
}

CommandResult<Report> run(const HeightRequest& request, Application& application) {
    return answer(request, Phrase("Height"), heightMeasure, &BodyMetrics::currentHeight, application);
}

}  // namespace pedvar
