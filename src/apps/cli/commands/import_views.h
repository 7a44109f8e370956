/// What an import did, for people and for scripts.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/screen.h"
#include "core/json_value.h"
#include "linux/health/health_administration.h"
#include "linux/import/import_report.h"

#include <string>

namespace pedvar {

JsonObject importDocument(const ImportReport& report, const Texts& text);
std::string importView(const ImportReport& report, const Screen& screen);

/// Of an import that was taken back.
JsonObject undoneDocument(const UndoneImport& undone, const Calendar& calendar);
std::string undoneView(const UndoneImport& undone, const Screen& screen, const Calendar& calendar);

/// The error of a file that has one.
CommandError errorOf(const ImportedFile& file);

}  // namespace pedvar
