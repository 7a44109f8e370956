/// Parts of the command that records.
#pragma once

#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "linux/system/process_lock.h"
#include "recording/activity_session.h"

#include <filesystem>

namespace pedvar {

/// Holds others off for as long as this process records, or plays a recording back.
enum class Lock { recorder, replay };
CommandResult<ProcessLock> takeLock(const Application& application, Lock lock);

/// The file of the health store.
std::filesystem::path healthFile(const Application& application);

/// The answer that ends a recording.
Report finishedReport(const ActivitySession& session, const Application& application);

CommandResult<Report> replay(const RecordRequest& request, ActivityType type, Application& application);

}  // namespace pedvar
