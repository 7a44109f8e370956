/// Identifiers that are unique everywhere.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

class UUID {
public:
    using Bytes = std::array<std::uint8_t, 16>;

    /// All bits 0.
    constexpr UUID() = default;
    constexpr explicit UUID(const Bytes& bytes) : bytes_(bytes) {}

    /// A random UUID (RFC 9562, version 4) out of random bytes, of which it keeps 122 bits.
    static UUID random(Bytes bytes);

    /// A UUID that stands for content (RFC 9562, version 8) out of its hash, of which it keeps 122 bits.
    static UUID ofContent(Bytes hash);

    /// 4 for random ones, 8 for those of content.
    int version() const { return bytes_[6] >> 4; }

    /// The canonical form in either case; none for anything else.
    static std::optional<UUID> fromText(std::string_view text);
    /// "0F8FAD5B-D9CB-469F-A165-70867728950E".
    std::string text() const;

    auto operator<=>(const UUID&) const = default;

private:
    Bytes bytes_{};
};

}  // namespace pedvar
