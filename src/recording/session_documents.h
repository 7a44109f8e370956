/// How sessions stand in the defaults: documents in parts, each route in a list of its own.
#pragma once

#include "platform/document_parts.h"
#include "recording/in_progress_state.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

inline constexpr const char* sessionsKey = "savedActivitySessions";
inline constexpr const char* inProgressKey = "inProgressActivitySession_v1";

/// The list that holds the points of a session's route, from its first checkpoint on until it is deleted.
std::string routeList(UUID session);

/// The document of a list: an array of its texts.
SetFrame arrayFrame(std::string_view key);

/// A session as its list entry shows it.
struct SavedSession {
    ActivitySession session;     // its route is empty while the points are only in the store
    std::size_t pointCount = 0;  // of the route, wherever it is
};

/// A session with a hole for its route. None when it holds a number that no document can hold.
std::optional<std::string> sessionText(const ActivitySession& session, std::size_t pointCount);
std::optional<SavedSession> sessionIn(std::string_view text);

/// A checkpoint with two holes for one route: that of the session is taken to be `routePoints`. None when it holds
/// a number that no document can hold.
std::optional<std::string> checkpointText(const InProgressState& state);

/// Adds the points from `first` on to the session's list.
std::vector<PartsChange> routeAdditions(UUID session, const Route& route, std::size_t first);
/// The points in a list; those that cannot be read are missing.
Route routeIn(const std::vector<Part>& parts);

}  // namespace pedvar
