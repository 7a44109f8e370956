#include "linux/health/day_totals.h"

#include <algorithm>
#include <cstring>

namespace pedvar {
namespace {

// Bytes are those of memory: 96 doubles, then start and amount of each long share.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(LongShare) == 16);
constexpr std::size_t quarterBytes = quartersPerDay * sizeof(double);

}  // namespace

bool DayTotals::isEmpty() const {
    return longShares.empty() && std::ranges::none_of(quarters, hasSamples);
}

std::vector<std::byte> DayTotals::encode() const {
    std::vector<std::byte> bytes(quarterBytes + longShares.size() * sizeof(LongShare));
    std::memcpy(bytes.data(), quarters.data(), quarterBytes);
    if (!longShares.empty()) {
        std::memcpy(bytes.data() + quarterBytes, longShares.data(), bytes.size() - quarterBytes);
    }
    return bytes;
}

std::optional<DayTotals> DayTotals::decode(Milliseconds longest, std::span<const std::byte> bytes) {
    if (bytes.size() < quarterBytes || (bytes.size() - quarterBytes) % sizeof(LongShare) != 0) return std::nullopt;
    DayTotals totals;
    totals.longest = longest;
    std::memcpy(totals.quarters.data(), bytes.data(), quarterBytes);
    if (bytes.size() > quarterBytes) {
        totals.longShares.resize((bytes.size() - quarterBytes) / sizeof(LongShare));
        std::memcpy(totals.longShares.data(), bytes.data() + quarterBytes, bytes.size() - quarterBytes);
    }
    return totals;
}

}  // namespace pedvar
