#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/amounts.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/water.h"

#include <algorithm>
#include <utility>

namespace pedvar {
namespace {

constexpr std::size_t longestLabel = 40;  // columns

CommandResult<std::string> labelNamed(std::string_view name, const Texts& text) {
    if (name.empty() || columns(name) > longestLabel || harmless(name) != name) {
        return usageError(
            text("\"{}\" is no name of a container; one has 1 to {} characters.", harmless(name), longestLabel));
    }
    return std::string(name);
}

bool isChange(const ContainersRequest& request) {
    return request.amount || request.drink || request.newName || request.isDefault;
}

/// The container to change, made if it is not there and an amount says how large it is.
CommandResult<HydrationContainer*> chosen(HydrationSettings& settings, const ContainersRequest& request,
                                          UUID newID, const Texts& text) {
    const auto known = containerNamed(settings, *request.name, text);
    if (known) return &settings.containers[static_cast<std::size_t>(*known - settings.containers.data())];
    if (!request.amount) return std::unexpected(known.error());
    const auto label = labelNamed(*request.name, text);
    if (!label) return std::unexpected(label.error());
    return &settings.containers.emplace_back(HydrationContainer{.id = newID, .label = *label});
}

CommandResult<void> change(HydrationSettings& settings, const ContainersRequest& request, UUID newID,
                           VolumeUnit unit, const Texts& text) {
    const auto found = chosen(settings, request, newID, text);
    if (!found) return std::unexpected(found.error());
    HydrationContainer& container = **found;
    if (request.amount) {
        const auto amount = amountNamed(*request.amount, request.unit, unit, text);
        if (!amount) return std::unexpected(amount.error());
        container.milliliters = *amount;
    }
    if (request.drink) {
        const auto type = drinkNamed(*request.drink, text);
        if (!type) return std::unexpected(type.error());
        container.drinkType = *type;
    }
    if (request.newName) {
        const auto label = labelNamed(*request.newName, text);
        if (!label) return std::unexpected(label.error());
        const auto other = containerNamed(settings, *label, text);
        if (other && *other != &container) {
            return usageError(text("There is a container \"{}\" already.", harmless(*label)));
        }
        container.label = *label;
    }
    if (request.isDefault) settings.defaultContainerID = container.id;
    return {};
}

CommandResult<void> remove(HydrationSettings& settings, std::string_view name, const Texts& text) {
    const auto found = containerNamed(settings, name, text);
    if (!found) return std::unexpected(found.error());
    const UUID id = (*found)->id;
    std::erase_if(settings.containers, [&](const HydrationContainer& other) { return other.id == id; });
    if (settings.defaultContainerID == id) settings.defaultContainerID.reset();
    return {};
}

CommandResult<void> edit(const ContainersRequest& request, Water& water, Application& application) {
    const Texts& text = application.text();
    const VolumeUnit unit = water.manager.settings().volumeUnit.value_or(VolumeUnit::milliliters);
    const UUID newID = SystemRandom().uuid();
    CommandResult<void> edited;
    const auto saved = application.loop().run(water.manager.changeSettings([&](HydrationSettings& settings) {
        edited = request.isRemoval ? remove(settings, *request.name, text)
                                   : change(settings, request, newID, unit, text);
        return edited.has_value();
    }));
    return edited ? commandResult(saved) : edited;
}

JsonObject document(const HydrationSettings& settings) {
    JsonArray list;
    for (const HydrationContainer& container : settings.containers) {
        JsonObject entry{
            {"id", {container.id.text()}},
            {"milliliters", {container.milliliters}},
            {"drinkType", {std::string(caseName(container.drinkType))}},
            {"label", {container.label}},
            {"isDefault", {settings.defaultContainerID == container.id}},
        };
        list.push_back({std::move(entry)});
    }
    return {{"containers", {std::move(list)}}};
}

std::string view(const HydrationSettings& settings, const Application& application) {
    const Screen screen = application.screen();
    if (settings.containers.empty()) return screen.text("There are no containers.") + "\n";
    const VolumeUnit unit = settings.volumeUnit.value_or(VolumeUnit::milliliters);
    std::string result;
    for (const HydrationContainer& container : settings.containers) {
        const bool isDefault = settings.defaultContainerID == container.id;
        result += leftAligned(harmless(labelOf(container, screen.text)), longestLabel + 2) +
                  rightAligned(screen.figures.volume(container.milliliters, unit), 11) + "  " +
                  leftAligned(screen.text.lookUp(displayName(container.drinkType)), 16) +
                  (isDefault ? screen.text("default") : std::string()) + "\n";
    }
    return result;
}

}  // namespace

CommandResult<Report> run(const ContainersRequest& request, Application& application) {
    if ((request.name.has_value() != (isChange(request) || request.isRemoval)) ||
        (isChange(request) && request.isRemoval)) {
        return usageError(application.text()(
            "A container is named with what to change, or with --remove; `pedvar containers --help` tells more."));
    }
    const auto water = application.water();
    if (!water) return std::unexpected(water.error());
    auto damage = damageOf((*water)->manager.unreadableKeys(), application.text());
    std::string said;
    if (request.name) {
        if (const auto edited = edit(request, **water, application); !edited) {
            return std::unexpected(edited.error());
        }
        // What was asked for is done.
        if (damage) said = application.text().of(std::exchange(damage, std::nullopt)->message) + "\n\n";
    }
    const HydrationSettings settings = (*water)->manager.settings();
    if (application.wantsJson()) return Report{document(settings), std::move(damage)};
    return Report{said + view(settings, application), std::move(damage)};
}

}  // namespace pedvar
