/// GPX documents in files.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/screen.h"
#include "routes/gpx_parser.h"

#include <string>

namespace pedvar {

/// Whether the outermost element of the file is `gpx`, whatever its name and whatever follows. False for what
/// cannot be read.
bool isGPXFile(const std::string& path);

/// Reads a file. One without points is no failure; points without a time have the moment `now`.
CommandResult<GPXDocument> readGPXFile(const std::string& path, Date now,
                                       GPXReadings readings = GPXReadings::assumed);

/// Why a file without points is no route.
CommandError withoutPoints(const std::string& path);
/// Why a file with points is nobody's recording.
CommandError withoutTimes(const std::string& path, const Texts& text);
/// "Left out: 2 points without a time".
std::string leftOut(std::size_t pointsWithoutTime, const Screen& screen);

}  // namespace pedvar
