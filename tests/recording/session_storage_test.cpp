#include "core/record_reader.h"
#include "linux/system/sqlite_document_parts.h"
#include "linux/system/system_random.h"
#include "recording/checkpoint_store.h"
#include "recording/pending_workouts.h"
#include "support/fake_document_parts.h"
#include "support/sample_sessions.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <random>

using namespace pedvar;

namespace {

using Access = SqliteDefaults::Access;

/// Documents in a file of their own.
struct File {
    TemporaryFolder folder;
    SqliteDefaults defaults{folder.path(), Access::readWrite};
    SqliteDocumentParts documents{defaults};

    std::string document(std::string_view key) const {
        return SqliteDefaults(folder.path(), Access::readOnly).standard().data(key).value_or(Data{}).bytes;
    }
};

/// What the documents have to be, held whole.
struct Model {
    std::vector<ActivitySession> sessions;
    std::optional<InProgressState> checkpoint;
};

/// Does what people and recorders do, in an order of its own for each seed, starting anew now and then.
class Life {
public:
    Life(DocumentParts& documents, unsigned seed) : documents_(documents), random_(seed) { start(); }

    void step() {
        const int number = ++count_;
        switch (random_() % 8) {
            case 0:
                return start();
            case 1:
                return addSession(number);
            case 2:
                return changeSession();
            case 3:
                return finish();
            default:
                return checkpoint(number);
        }
    }

    const Model& model() const { return model_; }

private:
    void start() {
        history_.emplace(documents_);
        checkpoints_.emplace(documents_, *history_);
        const auto state = checkpoints_->restore(Date{});
        REQUIRE(state);
        REQUIRE(state->has_value() == model_.checkpoint.has_value());
        if (*state) REQUIRE(encodeJson(**state) == encodeJson(*model_.checkpoint));
        if (*state) model_.checkpoint = **state;
        REQUIRE(history_->savedSessions().size() == model_.sessions.size());
    }

    void addSession(int number) {
        model_.sessions.insert(model_.sessions.begin(), sampleSession(number, static_cast<int>(random_() % 300)));
        REQUIRE(history_->add(model_.sessions.front()));
    }

    void changeSession() {
        if (model_.sessions.empty()) return;
        const auto chosen =
            model_.sessions.begin() + static_cast<std::ptrdiff_t>(random_() % model_.sessions.size());
        const UUID id = chosen->id;
        if (random_() % 2 == 0) {
            chosen->activityType = ActivityType::run;
            REQUIRE(history_->changeType(id, ActivityType::run));
        } else {
            model_.sessions.erase(chosen);
            REQUIRE(history_->remove(id));
        }
    }

    void checkpoint(int number) {
        if (!model_.checkpoint) model_.checkpoint = sampleCheckpoint(number, 0);
        InProgressState& state = *model_.checkpoint;
        for (auto left = random_() % 200; left > 0; --left) state.routePoints.push_back(samplePoint(number));
        state.session.route = state.routePoints;
        state.currentDistance += 0.1;
        REQUIRE(checkpoints_->save(state, CheckpointTiming::forced));
    }

    void finish() {
        if (!model_.checkpoint) return;
        const ActivitySession session = retired(*model_.checkpoint);
        model_.checkpoint.reset();
        model_.sessions.insert(model_.sessions.begin(), session);
        REQUIRE(checkpoints_->finish(session));
    }

    DocumentParts& documents_;
    std::minstd_rand random_;
    int count_ = 0;
    Model model_;
    std::optional<SessionHistory> history_;
    std::optional<CheckpointStore> checkpoints_;
};

std::string wholeText(const std::optional<InProgressState>& checkpoint) {
    return checkpoint ? encodeJson(*checkpoint).value() : std::string();
}

}  // namespace

TEST_CASE("the parts together are always the document of the whole, in memory and in a file") {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        CAPTURE(seed);
        FakeDocumentParts memory;
        File file;
        Life inMemory(memory, seed), inFile(file.documents, seed);
        for (int step = 0; step < 60; ++step) {
            CAPTURE(step);
            inMemory.step();
            inFile.step();
            const Model& model = inMemory.model();
            const std::string sessions = memory.document(sessionsKey);
            REQUIRE((sessions.empty() ? "[]" : sessions) == encodeJson(model.sessions));
            REQUIRE(memory.document(inProgressKey) == wholeText(model.checkpoint));
            REQUIRE(file.document(sessionsKey) == sessions);
            REQUIRE(file.document(inProgressKey) == wholeText(model.checkpoint));
        }
        for (const auto& [name, parts] : memory.state.lists)
            REQUIRE(file.documents.list(name) == memory.list(name));
    }
}

TEST_CASE("changes of a file that cannot all be made are not made at all") {
    File file;
    REQUIRE(file.documents.write({AddPart{"list", 5, "five"}, AddPart{"list", std::nullopt, "front"},
                                  SetFrame{"key", "[" + Hole{"list", 0}.text() + "]"}}));
    CHECK(file.document("key") == "[front,five]");
    for (const PartsChange& impossible :
         {PartsChange(AddPart{"list", 5, "again"}), PartsChange(ReplacePart{"list", 5, "six", "seven"}),
          PartsChange(ReplacePart{"list", 6, "five", std::nullopt}),
          PartsChange(ReplacePart{"nowhere", 5, "five", std::nullopt})}) {
        const auto written = file.documents.write(
            {AddPart{"list", 9, "nine"}, RemoveList{"other"}, SetFrame{"key", std::nullopt}, impossible});
        REQUIRE(!written);
        CHECK(written.error().message.inEnglish().find(file.folder.path().string()) != std::string::npos);
        CHECK(file.document("key") == "[front,five]");
    }
    REQUIRE(file.documents.write({ReplacePart{"list", 5, "five", "FIVE"},
                                  ReplacePart{"list", 4, "front", std::nullopt},
                                  AddPart{"list", std::nullopt, "new"}}));
    CHECK(file.document("key") == "[new,FIVE]");
    REQUIRE(file.documents.write({RemoveList{"list"}}));
    CHECK(file.document("key") == "[]");
    CHECK(file.documents.frame("key"));
}

TEST_CASE("a value in place of a document ends it, and the other way round") {
    File file;
    const auto set = [&](std::optional<DefaultsValue> value) {
        return file.defaults.write({{&file.defaults.standard(), "key", std::move(value)}});
    };
    REQUIRE(set(std::int64_t{7}));
    CHECK(!file.documents.frame("key"));
    REQUIRE(file.documents.write({SetFrame{"key", "{}"}}));
    CHECK(file.document("key") == "{}");
    REQUIRE(set(Data{"[]"}));
    CHECK(!file.documents.frame("key"));
    CHECK(file.document("key") == "[]");
}

TEST_CASE("who only looks changes no documents and makes no file") {
    const TemporaryFolder folder;
    SqliteDefaults defaults(folder.path(), Access::readOnly);
    SqliteDocumentParts documents(defaults);
    SessionHistory history(documents);
    CHECK(CheckpointStore(documents, history).restore(Date{}).has_value());
    CHECK(!history.add(sampleSession(1)));
    CHECK(std::filesystem::is_empty(folder.path()));
}

TEST_CASE("UUIDs from the kernel all differ") {
    SystemRandom random;
    std::vector<UUID> uuids(100);
    for (UUID& uuid : uuids) uuid = random.uuid();
    std::ranges::sort(uuids);
    CHECK(std::ranges::adjacent_find(uuids) == uuids.end());
}
