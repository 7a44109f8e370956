#include "linux/health/source_order.h"

#include "linux/sqlite/connection.h"

#include <sqlite3.h>

#include <algorithm>

namespace pedvar {
namespace {

constexpr std::int64_t highestSource = 1'000'000;  // nobody owns more devices and applications

/// Where a new source of `kind` joins the order: behind the last of its kind, else before the first of a kind that
/// ranks lower by default.
std::int64_t positionFor(Connection& connection, SourceKind kind) {
    std::int64_t behindLast = 0;
    std::optional<std::int64_t> behindOwnKind;
    std::optional<std::int64_t> beforeLowerKind;
    Rows rows = connection.query("SELECT kind, position FROM sources ORDER BY position");
    while (rows.next()) {
        const SourceKind other = sourceKindNamed(rows.text(0)).value_or(SourceKind::application);
        const std::int64_t position = rows.integer(1);
        behindLast = position + 1;
        if (other == kind) behindOwnKind = position + 1;
        if (other > kind && !beforeLowerKind) beforeLowerKind = position;
    }
    return behindOwnKind.value_or(beforeLowerKind.value_or(behindLast));
}

}  // namespace

SourceOrder SourceOrder::load(Connection& connection) {
    std::vector<std::int32_t> sources;
    Rows rows = connection.query("SELECT id FROM sources ORDER BY position, id");
    while (rows.next()) {
        const std::int64_t id = rows.integer(0);
        if (id < 0 || id > highestSource) throw SqliteFailure(SQLITE_CORRUPT, "a source has an impossible number");
        sources.push_back(static_cast<std::int32_t>(id));
    }
    return SourceOrder(std::move(sources));
}

SourceOrder::SourceOrder(std::vector<std::int32_t> sources) : sources_(std::move(sources)) {
    if (sources_.empty()) return;
    ranks_.resize(static_cast<std::size_t>(std::ranges::max(sources_)) + 1);
    for (std::size_t rank = 0; rank < sources_.size(); ++rank)
        ranks_[static_cast<std::size_t>(sources_[rank])] = rank;
}

SourceOrder SourceOrder::only(std::span<const std::int64_t> ids) const {
    std::vector<std::int32_t> kept;
    std::ranges::copy_if(sources_, std::back_inserter(kept),
                         [&](std::int32_t source) { return std::ranges::find(ids, source) != ids.end(); });
    return SourceOrder(std::move(kept));
}

std::optional<std::size_t> SourceOrder::rank(std::int32_t source) const {
    const auto index = static_cast<std::size_t>(source);
    return index < ranks_.size() ? ranks_[index] : std::nullopt;
}

AddedSource addSource(Connection& connection, const SourceDescription& description,
                      std::optional<std::int64_t> import) {
    const std::string_view kind = nameOf(description.kind);
    {
        Rows known = connection.query("SELECT id FROM sources WHERE kind = ? AND name = ? AND hardware = ?", kind,
                                      std::string_view(description.name), std::string_view(description.hardware));
        if (known.next()) return {static_cast<std::int32_t>(known.integer(0)), false};
    }
    const std::int64_t position = positionFor(connection, description.kind);
    connection.run("UPDATE sources SET position = position + 1 WHERE position >= ?", position);
    connection.run("INSERT INTO sources (kind, name, hardware, position, import) VALUES (?, ?, ?, ?, ?)", kind,
                   std::string_view(description.name), std::string_view(description.hardware), position, import);
    return {static_cast<std::int32_t>(connection.lastInsertedRow()), true};
}

}  // namespace pedvar
