/// Parts of the command that records.
#pragma once

#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "linux/system/process_lock.h"
#include "recording/activity_session.h"

#include <string>

namespace pedvar {

/// The lock of that name in the data folder, for as long as this process records.
CommandResult<ProcessLock> takeLock(const Application& application, const std::string& name);

/// The file of the health store.
std::filesystem::path healthFile(const Application& application);

/// The answer that ends a recording.
Report finishedReport(const ActivitySession& session, const Application& application);

CommandResult<Report> replay(const RecordRequest& request, ActivityType type, Application& application);

}  // namespace pedvar
