#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/health.h"
#include "core/reflection.h"
#include "insights/comparison.h"

namespace pedvar {
namespace {

/// Words the rows of one metric.
class Wording {
public:
    Wording(ComparisonMetric metric, const Application& application, const Screen& screen)
        : metric_(metric), application_(application), screen_(screen) {}

    std::string amount(double value) const { return screen_.figures.amount(metric_, value); }
    std::string difference(const ComparisonDelta& delta) const {
        return in(wording(delta, [this](double value) { return amount(value); }));
    }
    std::string in(const Phrase& phrase) const { return phrase.in(application_.catalogue()); }

private:
    ComparisonMetric metric_;
    const Application& application_;
    const Screen& screen_;
};

JsonObject document(const Comparison& comparison, const Wording& words) {
    JsonArray rows;
    for (const ComparisonSection& section : comparison.sections) {
        for (const ComparisonRowSpec& row : section.rows) {
            rows.push_back({JsonObject{
                {"id", {std::string(row.id)}},
                {"section", {std::string(section.title)}},
                {"title", {std::string(row.title)}},
                {"subtitle", {std::string(row.subtitle)}},
                {"current", {row.delta.current}},
                {"reference", {row.delta.reference}},
                {"text", {words.difference(row.delta)}},
            }});
        }
    }
    const auto& sentence = comparison.sentence;
    return {
        {"metric", {std::string(caseName(comparison.metric))}},
        {"current", {comparison.current}},
        {"sevenDayAverage", {comparison.sevenDayAverage}},
        {"sentence", sentence ? JsonValue{words.in(*sentence)} : JsonValue{}},
        {"rows", {std::move(rows)}},
    };
}

/// More is shown in the colour of steps, less without.
std::string rowView(const ComparisonRowSpec& row, const Wording& words, const Screen& screen) {
    const std::string difference = words.difference(row.delta);
    return "  " + leftAligned(screen.text.lookUp(row.title), 31) +
           rightAligned(words.amount(row.delta.reference), 12) + "   " +
           (row.delta.difference() > 0 ? screen.accented(difference) : difference) + "\n";
}

std::string view(Day day, const Comparison& comparison, const Wording& words, const Screen& screen) {
    const std::string heading = screen.text.lookUp(title(comparison.metric));
    const std::string date = screen.figures.longDate(day);
    std::string result = screen.bold(heading) + rightAligned(date, screenWidth - columns(heading)) + "\n" +
                         words.amount(comparison.current) + "\n";
    if (comparison.sentence) result += words.in(*comparison.sentence) + "\n";
    for (const ComparisonSection& section : comparison.sections) {
        result += "\n" + screen.faint(screen.text.lookUp(section.title)) + "\n";
        for (const ComparisonRowSpec& row : section.rows) result += rowView(row, words, screen);
    }
    return result;
}

}  // namespace

CommandResult<Report> run(const CompareRequest& request, Application& application) {
    const auto metric = metricNamed(request.metric, application.text());
    if (!metric) return std::unexpected(metric.error());
    const auto day = pastDayNamed(request.day, application.today(), application.text());
    if (!day) return std::unexpected(day.error());
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const std::int64_t goal = application.settings().goalHistory().goalOn(*day);
    const Comparison comparison = application.loop().run(
        fetchComparison((*health)->manager.reads(), *metric, *day, application.settings().calendar(), goal));
    const Screen screen = application.screen();
    const Wording words(*metric, application, screen);
    if (application.wantsJson()) return Report{document(comparison, words)};
    return Report{view(*day, comparison, words, screen)};
}

}  // namespace pedvar
