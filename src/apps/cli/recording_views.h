/// What a recording shows of itself.
#pragma once

#include "apps/cli/live_screen.h"
#include "apps/cli/screen.h"
#include "core/json_value.h"
#include "recording/activity_recorder_manager.h"

#include <cstddef>
#include <string>
#include <vector>

namespace pedvar {

/// "recording", "autoPaused" or "paused".
JsonObject statusDocument(const ActivityRecorderManager& recorder, Date now, const Calendar& calendar,
                          const Texts& text);

/// Why the last checkpoint could not be written.
std::string storageText(const Phrase& problem, const Texts& text);

/// The values as they stand on the screen, a line each.
std::vector<ScreenLine> statusLines(const ActivityRecorderManager& recorder, Date now, const Screen& screen,
                                    std::size_t width);

}  // namespace pedvar
