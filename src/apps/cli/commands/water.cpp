#include "apps/cli/water.h"

#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/amounts.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/moment.h"

#include <algorithm>
#include <utility>

namespace pedvar {
namespace {

constexpr std::chrono::days historySpan{30};

/// What is shown; the days only of a history.
struct Shown {
    double today;
    double goal;
    double lastAmount;
    std::vector<Drink> drinks;
    Day firstDay;
    std::vector<double> days;
    VolumeUnit unit;
    Calendar calendar;
};

CommandError errorOf(const HydrationError& error, const Texts& text) {
    if (const auto* defaults = std::get_if<DefaultsError>(&error)) return errorOf(*defaults);
    if (const auto* health = std::get_if<HKError>(&error)) {
        return {ErrorKind::failed, health->localizedDescription};
    }
    if (std::get<DrinkRefusal>(error) == DrinkRefusal::nothingToUndo) {
        return {ErrorKind::failed, text("There is no drink to take back.")};
    }
    return {ErrorKind::usage, text("That is no amount to drink.")};
}

/// What the person drinks: what is named, and of the default container the rest.
CommandResult<std::pair<double, DrinkType>> drinkOf(const WaterRequest& request, const HydrationSettings& settings,
                                                    const Texts& text) {
    const HydrationContainer* container = defaultContainer(settings);
    if (request.container) {
        const auto named = containerNamed(settings, *request.container, text);
        if (!named) return std::unexpected(named.error());
        container = *named;
    }
    const bool isFromContainer = request.container || !request.amount;
    DrinkType type = isFromContainer && container ? container->drinkType : DrinkType::water;
    if (request.drink) {
        const auto named = drinkNamed(*request.drink, text);
        if (!named) return std::unexpected(named.error());
        type = *named;
    }
    if (request.amount) {
        const auto amount = amountNamed(*request.amount, request.unit,
                                        settings.volumeUnit.value_or(VolumeUnit::milliliters), text);
        if (!amount) return std::unexpected(amount.error());
        return std::pair(*amount, type);
    }
    if (!container) return usageError(text("An amount is needed, as there is no default container."));
    return std::pair(container->milliliters, type);
}

std::string drinkText(const Drink& drink, VolumeUnit unit, const Application& application, const Screen& screen) {
    return screen.text("{0} of {1}", screen.figures.volume(drink.milliliters, unit),
                       application.catalogue().text(displayName(drink.drinkType)));
}

/// Does what is asked for, and says so.
CommandResult<std::string> act(const WaterRequest& request, Water& water, Application& application) {
    const Screen screen = application.screen();
    const HydrationSettings settings = water.manager.settings();
    const VolumeUnit unit = settings.volumeUnit.value_or(VolumeUnit::milliliters);
    if (request.undo) {
        const auto undone = application.loop().run(water.manager.undo());
        if (!undone) return std::unexpected(errorOf(undone.error(), screen.text));
        return screen.text("Taken back: {}.", drinkText(*undone, unit, application, screen)) + "\n\n";
    }
    const auto wanted = drinkOf(request, settings, screen.text);
    if (!wanted) return std::unexpected(wanted.error());
    const auto drunk = application.loop().run(water.manager.drink(wanted->first, wanted->second));
    if (!drunk) return std::unexpected(errorOf(drunk.error(), screen.text));
    return screen.text("Added: {}.", drinkText(*drunk, unit, application, screen)) + "\n\n";
}

CommandResult<Shown> look(const WaterRequest& request, Water& water, Application& application) {
    application.loop().run(water.manager.read());
    const Day today = application.today();
    Shown shown{.today = water.manager.todayMilliliters,
                .goal = water.manager.goalMilliliters,
                .lastAmount = water.group.lastAmountMilliliters(),
                .drinks = water.manager.todayDrinks,
                .firstDay = today + std::chrono::days(1) - historySpan,
                .days = {},
                .unit = water.manager.settings().volumeUnit.value_or(VolumeUnit::milliliters),
                .calendar = application.settings().calendar()};
    if (!request.history) return shown;
    const auto days = application.loop().run(water.manager.fetchDays(shown.firstDay, today));
    if (!days) {
        return std::unexpected(CommandError{ErrorKind::failed, application.text()("The drinks cannot be read.")});
    }
    shown.days = *days;
    shown.drinks = application.loop().run(
        water.manager.fetchDrinks({shown.calendar.start(shown.firstDay), shown.calendar.interval(today).end}));
    return shown;
}

JsonObject document(const Shown& shown) {
    JsonArray drinks;
    for (const Drink& drink : shown.drinks) {
        JsonObject entry{
            {"time", {isoText(drink.date, shown.calendar)}},
            {"milliliters", {drink.milliliters}},
            {"drink", {std::string(caseName(drink.drinkType))}},
            {"waterMilliliters", {drink.waterMilliliters}},
            {"isInHealth", {drink.isInHealth}},
        };
        drinks.push_back({std::move(entry)});
    }
    JsonObject result{
        {"todayMilliliters", {shown.today}},
        {"goalMilliliters", {shown.goal}},
        {"drinks", {std::move(drinks)}},
        {"lastAmountMilliliters", {shown.lastAmount}},
    };
    if (shown.days.empty()) return result;
    JsonArray days;
    for (std::size_t i = 0; i < shown.days.size(); ++i) {
        const std::string date = isoText(shown.firstDay + std::chrono::days(i));
        days.push_back({JsonObject{{"date", {date}}, {"milliliters", {shown.days[i]}}}});
    }
    result.emplace_back("days", JsonValue{std::move(days)});
    return result;
}

std::string todayView(const Shown& shown, const Screen& screen) {
    const Figures& figures = screen.figures;
    const double share = shown.goal > 0 ? shown.today / shown.goal : 0;
    const std::string drunk = figures.volume(shown.today, shown.unit);
    const std::string ofGoal = screen.text("{}% of {}", figures.number(static_cast<std::int64_t>(share * 100)),
                                           figures.volume(shown.goal, shown.unit));
    const std::string filled = bar(share, screenWidth);
    return screen.bold(drunk) + rightAligned(ofGoal, screenWidth - columns(drunk)) + "\n" +
           screen.accented(filled) + screen.faint(groove(filled, screenWidth)) + "\n";
}

std::string drinkLines(const Shown& shown, const Application& application, const Screen& screen) {
    const Figures& figures = screen.figures;
    std::string result;
    double listed = 0;
    for (const Drink& drink : shown.drinks) {
        listed += drink.waterMilliliters;
        result += rightAligned(figures.time(shown.calendar.localTime(drink.date)), 8) +
                  rightAligned(figures.volume(drink.milliliters, shown.unit), 12) + "  " +
                  application.catalogue().text(displayName(drink.drinkType)) + "\n";
    }
    constexpr double nothing = 0.5;  // millilitres; less is rounding
    if (shown.today - listed > nothing) {
        result += rightAligned("", 8) + rightAligned(figures.volume(shown.today - listed, shown.unit), 12) + "  " +
                  screen.text("from other sources") + "\n";
    }
    return result.empty() ? result : "\n" + result;
}

std::string historyLines(const Shown& shown, const Screen& screen) {
    constexpr std::size_t barWidth = 48;
    const double scale = std::max(shown.goal, std::ranges::max(shown.days));
    std::string result = "\n";
    for (std::size_t i = 0; i < shown.days.size(); ++i) {
        const double amount = shown.days[i];
        result += leftAligned(screen.figures.date(shown.firstDay + std::chrono::days(i)), 18) +
                  rightAligned(screen.figures.volume(amount, shown.unit), 11) + "  " +
                  screen.accented(bar(scale > 0 ? amount / scale : 0, barWidth)) + "\n";
    }
    return result;
}

}  // namespace

CommandResult<Report> run(const WaterRequest& request, Application& application) {
    if (request.undo + request.history + isDrink(request) > 1) {
        return usageError(application.text()("A drink, --undo and --history go one at a time."));
    }
    const auto water = application.water();
    if (!water) return std::unexpected(water.error());
    auto damage = damageOf(water.value()->manager.unreadableKeys(), application.text());
    std::string said;
    if (request.undo || isDrink(request)) {
        const auto acted = act(request, **water, application);
        if (!acted) return std::unexpected(acted.error());
        said = *acted;
        if (damage) said += std::exchange(damage, std::nullopt)->message + "\n\n";  // what was asked for is done
    }
    const auto shown = look(request, **water, application);
    if (!shown) return std::unexpected(shown.error());
    if (application.wantsJson()) return Report{document(*shown), std::move(damage)};
    const Screen screen = application.screen();
    said += todayView(*shown, screen);
    said += request.history ? historyLines(*shown, screen) : drinkLines(*shown, application, screen);
    return Report{std::move(said), std::move(damage)};
}

}  // namespace pedvar
