#include "recording/session_history.h"

#include "core/record_reader.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

namespace pedvar {

namespace {

std::unexpected<DefaultsError> refused(Phrase message) {
    return std::unexpected(DefaultsError{std::move(message)});
}

UUID idOf(const SavedSession& saved) {
    return saved.session.id;
}

char upperCase(char character) {
    return 'a' <= character && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

}  // namespace

SessionHistory::SessionHistory(DocumentParts& documents) : documents_(documents) {
    load();
}

bool SessionHistory::contains(UUID id) const {
    return std::ranges::find(savedSessions_, id, idOf) != savedSessions_.end();
}

std::expected<UUID, SessionHistory::NotFound> SessionHistory::find(std::string_view prefix) const {
    const auto matches = [&](const SavedSession& saved) {
        return std::ranges::mismatch(prefix, idOf(saved).text(), {}, upperCase).in1 == prefix.end();
    };
    auto found = savedSessions_ | std::views::filter(matches);
    const auto first = found.begin();
    if (prefix.empty() || first == found.end()) return std::unexpected(NotFound::none);
    if (std::next(first) != found.end()) return std::unexpected(NotFound::several);
    return idOf(*first);
}

std::optional<ActivitySession> SessionHistory::wholeSession(UUID id) const {
    const auto found = std::ranges::find(savedSessions_, id, idOf);
    if (found == savedSessions_.end()) return std::nullopt;
    ActivitySession session = found->session;
    if (session.route.isEmpty()) session.route = routeIn(documents_.list(routeList(id)));
    return session;
}

DefaultsResult SessionHistory::add(const ActivitySession& session) {
    return add(session, 0, {});
}

DefaultsResult SessionHistory::add(const ActivitySession& session, std::size_t storedPoints,
                                   std::vector<PartsChange> alongside) {
    if (contains(session.id)) return documents_.write(alongside);
    const auto text = sessionText(session, session.route.size());
    if (!text) return refused(Phrase("The activity holds a number that cannot be stored."));
    if (auto tidied = tidy(); !tidied) return tidied;

    std::vector<PartsChange> changes = std::move(alongside);
    std::ranges::move(routeAdditions(session.id, session.route, storedPoints), std::back_inserter(changes));
    changes.push_back(AddPart{sessionsKey, std::nullopt, *text});
    changes.push_back(arrayFrame(sessionsKey));
    if (auto written = documents_.write(changes); !written) {
        // Another process may have added it meanwhile, or an entry that was set aside has left its route behind.
        const bool hasRoute = storedPoints == 0 && !documents_.list(routeList(session.id)).empty();
        if (!hasRoute) return written;
        if (entryOf(session.id)) {
            load();
            version = version + 1;
            return {};
        }
        changes.insert(changes.begin(), RemoveList{routeList(session.id)});
        if (auto again = documents_.write(changes); !again) return again;
    }

    savedSessions_.push_front({session, session.route.size()});
    savedSessions_.front().session.route = {};
    version = version + 1;
    return {};
}

DefaultsResult SessionHistory::changeType(UUID id, ActivityType type) {
    if (auto tidied = tidy(); !tidied) return tidied;
    const auto entry = entryOf(id);
    if (!entry) return refused(Phrase("There is no such activity."));
    SavedSession changed = sessionIn(entry->text).value();
    changed.session.activityType = type;
    std::vector<PartsChange> changes = routeAdditions(id, changed.session.route, 0);
    changes.push_back(
        ReplacePart{sessionsKey, entry->position, entry->text, sessionText(changed.session, changed.pointCount)});
    if (auto written = documents_.write(changes); !written) return written;
    if (const auto saved = placeOf(id); saved != savedSessions_.end()) saved->session.activityType = type;
    version = version + 1;
    return {};
}

DefaultsResult SessionHistory::remove(UUID id) {
    if (auto tidied = tidy(); !tidied) return tidied;
    const auto entry = entryOf(id);
    if (!entry) return refused(Phrase("There is no such activity."));
    const auto written = documents_.write(
        {ReplacePart{sessionsKey, entry->position, entry->text, std::nullopt}, RemoveList{routeList(id)}});
    if (!written) return written;
    if (const auto saved = placeOf(id); saved != savedSessions_.end()) savedSessions_.erase(saved);
    version = version + 1;
    return {};
}

void SessionHistory::load() {
    savedSessions_.clear();
    unreadable_.clear();
    isWhole_ = false;
    if (documents_.frame(sessionsKey)) {
        for (Part& part : documents_.list(sessionsKey)) {
            if (auto session = sessionIn(part.text)) {
                savedSessions_.push_back(std::move(*session));
            } else {
                unreadable_.push_back(std::move(part));
            }
        }
    } else if (const auto document = documents_.defaults().data(sessionsKey)) {
        loadWhole(document->bytes);
    }
}

void SessionHistory::loadWhole(std::string_view document) {
    isWhole_ = true;
    JsonReader json(document);
    json.beginArray();
    while (json.nextElement()) {
        const std::string_view text = json.skipValue();
        if (auto session = sessionIn(text)) {
            savedSessions_.push_back(std::move(*session));
        } else {
            unreadable_.push_back({.text = std::string(text)});
        }
    }
    if (json.isFinished()) return;
    savedSessions_.clear();
    unreadable_ = {{.text = std::string(document)}};
}

/// Brings the document into parts, and what cannot be read out of it.
DefaultsResult SessionHistory::tidy() {
    if (isWhole_ && documents_.frame(sessionsKey)) load();  // another process has done it
    if (!isWhole_ && unreadable_.empty()) return {};
    std::vector<PartsChange> changes;
    for (const Part& part : unreadable_) {
        changes.push_back(AddPart{setAsideKey, std::nullopt, part.text});
        changes.push_back(arrayFrame(setAsideKey));
        if (!isWhole_) changes.push_back(ReplacePart{sessionsKey, part.position, part.text, std::nullopt});
    }
    if (isWhole_) {
        changes.push_back(RemoveList{sessionsKey});
        changes.push_back(arrayFrame(sessionsKey));
        for (const SavedSession& saved : std::views::reverse(savedSessions_)) {
            const ActivitySession& session = saved.session;
            changes.push_back(RemoveList{routeList(session.id)});
            std::ranges::move(routeAdditions(session.id, session.route, 0), std::back_inserter(changes));
            changes.push_back(AddPart{sessionsKey, std::nullopt, sessionText(session, saved.pointCount).value()});
        }
    }
    if (auto written = documents_.write(changes); !written) {
        // What cannot be read may stay where it is for now.
        return isWhole_ ? written : DefaultsResult();
    }
    for (SavedSession& saved : savedSessions_) saved.session.route = {};
    unreadable_.clear();
    isWhole_ = false;
    return {};
}

std::deque<SavedSession>::iterator SessionHistory::placeOf(UUID id) {
    return std::ranges::find(savedSessions_, id, idOf);
}

std::optional<Part> SessionHistory::entryOf(UUID id) const {
    for (Part& part : documents_.list(sessionsKey)) {
        const auto stored = sessionIn(part.text);
        if (stored && idOf(*stored) == id) return std::move(part);
    }
    return std::nullopt;
}

}  // namespace pedvar
