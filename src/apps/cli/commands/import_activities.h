/// Importing what other programs have recorded.
#pragma once

#include "apps/cli/activity_list.h"
#include "apps/cli/application.h"

#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// What became of one GPX file.
struct ImportedGPX {
    std::string file;
    std::optional<Activity> activity;  // none after an error
    bool isNew = false;
    std::size_t pointsWithoutTime = 0;
    std::optional<CommandError> error;
};

/// Adds the activity of each file to the history; one that cannot be added does not keep the others.
std::vector<ImportedGPX> importActivities(const std::vector<std::string>& paths, ActivityType type,
                                          Application& application);

JsonArray importedDocument(const std::vector<ImportedGPX>& imported, const Texts& text);
std::string importedView(const std::vector<ImportedGPX>& imported, const Screen& screen, const Calendar& calendar);

}  // namespace pedvar
