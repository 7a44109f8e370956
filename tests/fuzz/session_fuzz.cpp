/// Whatever stands under the keys of history and checkpoint: reading it does no harm, and what is stored
/// afterwards reads back.
#include "core/record_reader.h"
#include "recording/checkpoint_store.h"
#include "support/fake_document_parts.h"
#include "support/sample_sessions.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using namespace pedvar;

namespace {

/// The input up to each of its zero bytes.
std::vector<std::string> texts(std::string_view input) {
    std::vector<std::string> texts{""};
    for (const char byte : input) {
        if (byte == '\0') {
            texts.emplace_back();
        } else {
            texts.back() += byte;
        }
    }
    return texts;
}

/// The first text is the frame of the document, or the document, the others are those of its lists.
void store(FakeDocumentParts& documents, const char* key, const std::string& list,
           const std::vector<std::string>& texts) {
    if (texts.size() == 1) {
        documents.state.values.emplace(key, Data{texts[0]});
        return;
    }
    documents.state.frames.emplace(key, texts[0]);
    for (std::size_t i = 1; i < texts.size(); ++i) {
        documents.state.lists[list].emplace(static_cast<std::int32_t>(i), texts[i]);
    }
}

void tryHistory(const std::vector<std::string>& texts) {
    FakeDocumentParts documents;
    store(documents, sessionsKey, sessionsKey, texts);
    SessionHistory history(documents);
    for (const SavedSession& saved : history.savedSessions()) {
        check(history.wholeSession(saved.session.id).has_value(), "a session of the list is not there");
    }
    const bool isNew = !history.contains(uuidOf(1));
    check(history.add(sampleSession(1)).has_value(), "a session cannot be added");
    const SessionHistory again(documents);
    check(again.savedSessions().size() == history.savedSessions().size(), "the history reads back as another one");
    check(!isNew || again.unreadableCount() == 0, "what cannot be read was not set aside");
    const auto whole = readJson<std::vector<ActivitySession>>(documents.document(sessionsKey));
    check(!isNew || (whole && whole->size() == again.savedSessions().size()), "the whole document cannot be read");
}

void tryCheckpoint(const std::vector<std::string>& texts) {
    FakeDocumentParts documents;
    store(documents, inProgressKey, routeList(uuidOf(1)), texts);
    SessionHistory history(documents);
    CheckpointStore checkpoints(documents, history);
    auto state = checkpoints.restore(Date{});
    check(state.has_value(), "a restore failed");
    if (!*state) {
        check(documents.document(inProgressKey).empty(), "a checkpoint of no use was left");
        return;
    }
    (*state)->routePoints.push_back(samplePoint(1));
    (*state)->session.route = (*state)->routePoints;
    check(checkpoints.save(**state, CheckpointTiming::forced).has_value(), "a checkpoint cannot be written");
    // Not as texts: points of old parts keep what other versions have written beside their members.
    const auto again = readJson<InProgressState>(documents.document(inProgressKey));
    check(again && encodeJson(*again) == encodeJson(**state), "a checkpoint reads back as another one");
    check(checkpoints.finish(retired(**state)).has_value(), "a recording cannot be finished");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto input = texts({reinterpret_cast<const char*>(data), size});
    tryHistory(input);
    tryCheckpoint(input);
    return 0;
}
