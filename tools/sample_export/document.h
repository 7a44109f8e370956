/// The document of an export.
#pragma once

#include "sample_export/day_plan.h"

#include <cstdio>
#include <vector>

namespace pedvar::sample {

/// When the export of these options is made, in seconds since 1970.
std::int64_t exportTime(const Options& options);

/// Writes the document as the phone does: all dates with the phone's offset on the day of the export, records
/// grouped by type, workouts and daily summaries behind them. False when it could not be written whole.
bool writeDocument(const std::vector<Day>& days, const Options& options, std::FILE* file);

}  // namespace pedvar::sample
