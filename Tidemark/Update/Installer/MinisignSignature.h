#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// The public half of a key of minisign(1), which names itself by eight bytes.
struct MinisignPublicKey {
    std::array<std::uint8_t, 8> keyID = {};
    std::array<std::uint8_t, 32> ed25519 = {};

    /// Reads the one line of Base64 that minisign prints; nothing for anything else.
    static std::optional<MinisignPublicKey> parse(std::string_view base64);

    bool operator==(const MinisignPublicKey&) const = default;
};

/// A signature file of minisign(1), in the prehashed form that it writes unless it is told otherwise: "ED", an
/// Ed25519 signature (RFC 8032) of the file's BLAKE2b-512 hash (RFC 7693). A plain value.
struct MinisignSignature {
    std::array<std::uint8_t, 8> keyID = {};
    std::array<std::uint8_t, 64> signature = {};
    std::string trustedComment = {};
    std::array<std::uint8_t, 64> globalSignature = {};  ///< Of signature and trusted comment.

    static constexpr std::size_t mostBytes = 4096;

    /// Reads the four lines of the file; nothing for anything else, such as the legacy form "Ed".
    static std::optional<MinisignSignature> parse(std::string_view text);

    /// Whether the owner of `key` has signed `content`, and the trusted comment with it.
    bool isValid(std::string_view content, const MinisignPublicKey& key) const;
};

}  // namespace tidemark
