/// The finished sessions.
#pragma once

#include "core/published.h"
#include "recording/session_documents.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Keeps the finished sessions, newest first, in one document that grows in parts: neither adding a session nor
/// reading the list touches the routes of the others. Lives on the main executor.
///
/// A session that cannot be read is left out, and with the next change it is moved to a document beside the
/// history
/// (`setAsideKey`); so is a history that cannot be read at all. Other processes may add sessions meanwhile; this
/// one sees them when it starts anew.
class SessionHistory {
public:
    /// Loads the list. Keeps the reference.
    explicit SessionHistory(DocumentParts& documents);

    const std::deque<SavedSession>& savedSessions() const { return savedSessions_; }
    /// Counts the changes of the list, for those who watch it.
    Published<std::int64_t> version;
    /// How many sessions could not be read; 1 for a history that could not.
    std::size_t unreadableCount() const { return unreadable_.size(); }

    bool contains(UUID id) const;
    enum class NotFound { none, several };
    /// The one session whose identifier begins with `prefix`, in either case. An empty prefix finds none.
    std::expected<UUID, NotFound> find(std::string_view prefix) const;

    /// A session with its route, from which points are missing that cannot be read. None when there is no such
    /// session.
    std::optional<ActivitySession> wholeSession(UUID id) const;

    /// Puts a session at the front. One that is there already stays as it is.
    DefaultsResult add(const ActivitySession& session);
    /// The same in one transaction with the changes `alongside`, which come first. So many points of its route are
    /// in the store already.
    DefaultsResult add(const ActivitySession& session, std::size_t storedPoints,
                       std::vector<PartsChange> alongside);

    DefaultsResult changeType(UUID id, ActivityType type);
    /// Deletes a session and its route.
    DefaultsResult remove(UUID id);

private:
    void load();
    void loadWhole(std::string_view document);
    DefaultsResult tidy();
    std::deque<SavedSession>::iterator placeOf(UUID id);
    /// Where the session stands in the store now.
    std::optional<Part> entryOf(UUID id) const;

    DocumentParts& documents_;
    std::deque<SavedSession> savedSessions_;
    std::vector<Part> unreadable_;
    bool isWhole_ = false;  // the document is not in parts yet
};

inline constexpr const char* setAsideKey = "savedActivitySessions.setAside";

}  // namespace pedvar
