/// Looking after the health store.
#pragma once

#include "linux/health/samples.h"
#include "linux/health/store_error.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pedvar {

class HealthDatabase;

/// A source and what it has contributed.
struct SourceSummary {
    std::int32_t id = 0;
    SourceKind kind = SourceKind::application;
    std::string name;
    std::string hardware;
    std::string label;             // the name, with as much added as tells it from the others; for `setOrder`
    std::int32_t priority = 0;     // 1 wins over all others
    std::int64_t sampleCount = 0;  // of all types
    double rawSum = 0;             // of the asked type, as if there were no other source
    double countedSum = 0;         // what of it counts where sources overlap
};

/// A day whose kept totals are not what its samples say.
struct TotalsDifference {
    std::string type;
    std::string day;  // "2024-05-01", UTC
    double kept = 0;
    double counted = 0;
};

/// A file or folder that others than its owner can reach.
struct LoosePermissions {
    std::string path;
    unsigned mode = 0;  // 0644
};

struct StoreExamination {
    std::vector<std::string> damages;                        // as SQLite tells them; empty when sound
    std::vector<std::pair<std::string, std::int64_t>> rows;  // table and number of rows
    std::int64_t staleDays = 0;                              // totals waiting to be made
    std::vector<TotalsDifference> differences;               // totals that are wrong
    std::vector<LoosePermissions> permissions;
};

/// What was taken back of an import.
struct UndoneImport {
    Date begun;  // when the import began
    std::int64_t samples = 0;
    std::int64_t workouts = 0;
    std::int64_t routes = 0;
    std::int64_t sources = 0;
};

/// By type, joined days of 24 hours UTC each, in order.
using ChangedDays = std::map<std::string, std::vector<Interval>, std::less<>>;

/// What the command line asks of the store and does to it. A store that does not exist is empty.
class HealthAdministration {
public:
    explicit HealthAdministration(HealthDatabase& database) : database_(database) {}

    /// Whether a source was ever connected.
    StoreResult<bool> isConnected() const;
    /// End of the sample of `type` that ended last.
    StoreResult<std::optional<Date>> newestSample(std::string_view type) const;

    /// All sources by priority, with the sums of `type`.
    StoreResult<std::vector<SourceSummary>> sources(std::string_view type) const;

    /// Puts the sources with these labels first, in this order; the others keep theirs behind them. All totals are
    /// made anew; `progress` as in SampleWriter::refreshTotals.
    StoreResult<> setOrder(std::span<const std::string> labels, const std::function<bool(double)>& progress = {});

    /// The intervals in which sums have changed since that was last settled.
    StoreResult<ChangedDays> changedDays() const;
    /// Hands them to `act` while nobody changes more of them, and forgets them when it succeeds. Calls nobody when
    /// there are none.
    StoreResult<> settleChangedDays(const std::function<bool(const ChangedDays&)>& act);

    /// Takes back what the last import has added that added something: samples and workouts with their routes, and
    /// sources that nothing is of any more; none where there is no such import. An import that still runs ends
    /// with an error. `progress` as in SampleWriter::refreshTotals.
    StoreResult<std::optional<UndoneImport>> undoImport(const std::function<bool(double)>& progress = {});

    /// Looks at everything and changes nothing; takes seconds for a large store.
    StoreResult<StoreExamination> examine() const;

    /// Drops all totals and makes them anew.
    StoreResult<> rebuildTotals(const std::function<bool(double)>& progress = {});

private:
    HealthDatabase& database_;
};

}  // namespace pedvar
