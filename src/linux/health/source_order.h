/// Which source wins where several overlap.
#pragma once

#include "linux/health/samples.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace pedvar {

class Connection;

/// The ranks of the sources, 0 first.
class SourceOrder {
public:
    /// As it is kept in the store.
    static SourceOrder load(Connection& connection);

    /// Where the sources that are not among `ids` do not exist.
    SourceOrder only(std::span<const std::int64_t> ids) const;

    std::size_t count() const { return sources_.size(); }
    std::int32_t source(std::size_t rank) const { return sources_[rank]; }
    std::optional<std::size_t> rank(std::int32_t source) const;

private:
    explicit SourceOrder(std::vector<std::int32_t> sources);

    std::vector<std::int32_t> sources_;              // by rank
    std::vector<std::optional<std::size_t>> ranks_;  // by source
};

struct AddedSource {
    std::int32_t number;
    bool isNew;
};
/// The source, new behind the last of its kind if need be, then as one of `import`. In a writing transaction.
AddedSource addSource(Connection& connection, const SourceDescription& description,
                      std::optional<std::int64_t> import);

}  // namespace pedvar
