#include "linux/health_store_fixture.h"

#include <sqlite3.h>

#include <cstdlib>
#include <random>

namespace pedvar {
namespace {

/// A random life of a store beside a plain list of what is in it.
class RandomStore : public HealthStoreFixture {
public:
    explicit RandomStore(unsigned seed) : random_(seed) {
        for (const auto kind : {SourceKind::own, SourceKind::watch, SourceKind::phone}) {
            order.push_back(source(kind, std::string(nameOf(kind))));
        }
    }

    std::vector<std::int32_t> order;
    std::set<TestSample> samples;

    std::int64_t number(std::int64_t lowest, std::int64_t highest) {
        return std::uniform_int_distribution<std::int64_t>(lowest, highest)(random_);
    }

    TestSample sample() {
        constexpr std::array<std::int64_t, 6> longest{0, 10 * minute, 10 * minute, hour, 4 * hour, 30 * hour};
        const std::int64_t duration = number(0, longest[static_cast<std::size_t>(number(0, 5))]);
        // Much happens around midnight, little at other times.
        const std::int64_t start = number(0, 1) == 0 ? number(day - hour, day + hour) : number(-day, 3 * day);
        return {order[static_cast<std::size_t>(number(0, 2))], start, duration,
                static_cast<double>(number(0, 400)) / 4};
    }

    void writeBatch() { CHECK(add(remembered(number(1, number(0, 2) == 0 ? 40 : 2))) >= 0); }
    void saveLive() { REQUIRE(writer.writeLive(rows(remembered(number(1, 3))))); }
    /// One that is not there, and of those that are one, or more where there are many: a long life stays quick.
    void removeLive() {
        constexpr std::size_t many = 300;
        std::vector<TestSample> removed{{order[0], 5 * day, 1, 1}};
        while (!samples.empty() && (removed.size() == 1 || samples.size() > many)) {
            const auto chosen = std::next(samples.begin(), number(0, std::ssize(samples) - 1));
            removed.push_back(*chosen);
            samples.erase(chosen);
        }
        REQUIRE(writer.removeLive(rows(removed)));
    }
    void refreshPartly() {
        REQUIRE(writer.refreshTotals([](double) { return false; }));
    }
    void changeOrder() {
        std::ranges::shuffle(order, random_);
        std::vector<std::string> labels;
        for (const std::int32_t each : order) labels.emplace_back(nameOf(static_cast<SourceKind>(kindOf(each))));
        REQUIRE(administration.setOrder(labels, [](double) { return false; }));
    }

    /// Every byte of the totals.
    std::string totals() {
        auto connection = database.connectForReading();
        Rows rows =
            (*connection)->query("SELECT quote(series), quote(day), quote(longest), quote(sums) FROM totals");
        std::string text;
        while (rows.next()) {
            for (int column = 0; column < 4; ++column) (text += rows.text(column)) += ' ';
        }
        return text;
    }

private:
    std::vector<TestSample> remembered(std::int64_t count) {
        std::vector<TestSample> made;
        for (std::int64_t i = 0; i < count; ++i) made.push_back(sample());
        samples.insert(made.begin(), made.end());
        return made;
    }
    int kindOf(std::int32_t source) const { return source == 1 ? 0 : source == 2 ? 1 : 3; }

    std::mt19937 random_;
};

/// One long run instead of several short ones, as the soak asks for it.
std::optional<int> longRun() {
    const char* const steps = std::getenv("PEDVAR_RANDOM_WRITES");
    return steps ? std::optional(std::stoi(steps)) : std::nullopt;
}

TEST_CASE("sums are those of a count second by second, whatever is written, saved, removed and reordered") {
    const unsigned seeds = longRun() ? 1 : 8;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        CAPTURE(seed);
        RandomStore store(seed);
        for (int step = 0; step < longRun().value_or(40); ++step) {
            CAPTURE(step);
            switch (store.number(0, 9)) {
                case 0:
                    store.changeOrder();
                    break;
                case 1:
                case 2:
                    store.writeBatch();
                    break;
                case 3:
                case 4:
                    store.refreshPartly();
                    break;
                case 5:
                case 6:
                    store.removeLive();
                    break;
                default:
                    store.saveLive();
            }
            const SlowCount count({store.samples.begin(), store.samples.end()}, store.order);
            for (int query = 0; query < 4; ++query) {
                const std::int64_t from = store.number(-day, 3 * day);
                const std::int64_t to = from + store.number(0, query == 0 ? 900 : 2 * day);
                const auto expected = count.sum(from, to);
                const auto sum = store.sum(from, to);
                REQUIRE(sum.has_value() == expected.has_value());
                REQUIRE(sum.value_or(0) == doctest::Approx(expected.value_or(0)).epsilon(1e-9));
            }
        }
        REQUIRE(store.writer.refreshTotals());
        const auto examination = store.administration.examine();
        REQUIRE(examination);
        CHECK(examination->staleDays == 0);
        CHECK(examination->differences.empty());
        const std::string kept = store.totals();
        REQUIRE(store.administration.rebuildTotals());
        CHECK(store.totals() == kept);  // to the last bit
    }
}

TEST_CASE_FIXTURE(HealthStoreFixture, "a live save leaves the totals it touches fresh") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    add({{phone, 0, hour, 60}, {phone, day - 600, 1200, 20}});
    REQUIRE(writer.refreshTotals());
    REQUIRE(writer.writeLive(rows({{watch, 30 * minute, minute, 1}, {watch, day, 600, 7}})));
    CHECK(administration.examine()->staleDays == 0);
    CHECK(sum(0, day) == doctest::Approx(59 + 1 + 10));
    CHECK(sum(day, 2 * day) == 7);
}

TEST_CASE_FIXTURE(HealthStoreFixture, "what was made of sums is recalled until one of them changes") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    add({{phone, 0, 60, 5}});
    const HKQuantityType steps{HKQuantityTypeIdentifierStepCount};
    const auto recall = [&] {
        return *answerTo<RecalledText>(
            [&](HKHandler<RecalledText> handler) { store.recall("a", steps, std::move(handler)); });
    };
    const auto keep = [&](std::int64_t state) {
        return answerTo<void>([&](HKHandler<void> handler) {
            store.keep({"a", steps, at(10 * day), "text"}, state, std::move(handler));
        });
    };
    const std::int64_t before = recall().state;
    REQUIRE(keep(before));
    CHECK(recall().text == "text");
    REQUIRE(writer.writeLive(rows({{phone, 11 * day, 60, 1}})));
    add({{phone, 12 * day, 60, 1}});
    CHECK(recall().text == "text");
    for (const std::int64_t second : {10 * day - 1, std::int64_t{60}}) {
        REQUIRE(writer.writeLive(rows({{phone, second, 1, 1}})));
        CHECK(!recall().text);
        REQUIRE(keep(before));
        CHECK(!recall().text);  // it was made of other sums
        REQUIRE(keep(recall().state));
    }
    REQUIRE(administration.setOrder({}));
    CHECK(!recall().text);
}

TEST_CASE_FIXTURE(HealthStoreFixture, "a look from an earlier moment sees nothing that began later") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    add({{phone, 0, 60, 5}, {phone, 8 * hour, 600, 20}, {phone, 9 * hour, 60, 1}, {phone, day, 60, 300}});
    REQUIRE(writer.refreshTotals());
    SqliteHealthStore earlier(time, database, zone, at(9 * hour));
    CHECK(collection(earlier, at(0), at(2 * day), {.day = 1})[0] == 25);
    CHECK(std::isnan(collection(earlier, at(0), at(2 * day), {.day = 1})[1]));
    CHECK(collection(earlier, at(0), at(day), {.hour = 1}).size() == 24);
}

TEST_CASE_FIXTURE(HealthStoreFixture, "a second copy of a sample adds nothing and makes nothing stale") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    std::vector<TestSample> samples;
    for (std::int64_t i = 0; i < 500; ++i)
        samples.push_back({phone, (i * 7919) % (9 * day), 60, 0.1 * static_cast<double>(i)});
    CHECK(add(samples) == 500);
    REQUIRE(writer.refreshTotals());
    changedDays();
    std::ranges::reverse(samples);
    SampleWriter again(database);
    CHECK(*again.source({.kind = SourceKind::phone, .name = "Phone", .hardware = ""}) == phone);
    CHECK(*again.series(HKQuantityTypeIdentifierStepCount, "count") ==
          *writer.series(HKQuantityTypeIdentifierStepCount, "count"));
    CHECK(again.write(rows(samples))->samplesAdded == 0);
    CHECK(changedDays().empty());
    CHECK(administration.examine()->staleDays == 0);

    samples.push_back({phone, 20 * day, 0, 1});
    samples.push_back({phone, 21 * day, 0, 1});
    CHECK(again.write(rows(samples))->samplesAdded == 2);
    const ChangedDays expected{{HKQuantityTypeIdentifierStepCount, {{at(20 * day), at(22 * day)}}}};
    CHECK(administration.changedDays() == expected);
    CHECK(administration.settleChangedDays([&](const ChangedDays& changed) { return changed != expected; }));
    CHECK(changedDays() == expected);  // refused above, so they were not forgotten
    CHECK(changedDays().empty());
    REQUIRE(again.writeLive(rows({{phone, 20 * day + 60, 60, 3}})));
    CHECK(changedDays().size() == 1);
    REQUIRE(administration.setOrder({}));
    CHECK(changedDays().at(HKQuantityTypeIdentifierStepCount).size() == 2);  // days 0 to 8, days 20 and 21
}

TEST_CASE_FIXTURE(HealthStoreFixture, "totals that are not what the samples say are found and made anew") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    add({{phone, 0, 60, 10}, {phone, 5 * day, 60, 20}, {phone, 6 * day, 60, 5}});
    REQUIRE(writer.refreshTotals());
    {
        auto connection = database.connectForWriting();
        connection->run("UPDATE totals SET sums = (SELECT sums FROM totals WHERE day = 5) WHERE day = 0");
        connection->run("UPDATE totals SET sums = zeroblob(3) WHERE day = 6");
        connection->run("DELETE FROM totals WHERE day = 5");
    }
    const auto examination = administration.examine();
    REQUIRE(examination->differences.size() == 3);
    CHECK(examination->differences[0].day == "2001-01-01");
    CHECK(examination->differences[0].kept == 20);
    CHECK(examination->differences[0].counted == 10);
    CHECK(examination->damages.empty());
    CHECK(sum(6 * day, 7 * day) == 5);  // bytes that mean nothing are not believed
    REQUIRE(administration.rebuildTotals());
    CHECK(administration.examine()->differences.empty());
    CHECK(sum(0, day) == 10);
    CHECK(sum(5 * day, 6 * day) == 20);
}

}  // namespace
}  // namespace pedvar
