#include "MinisignSignature.h"

#include <sodium.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <vector>

namespace tidemark {

namespace {

constexpr std::string_view keyAlgorithm = "Ed";
constexpr std::string_view prehashed = "ED";
constexpr std::string_view untrustedPrefix = "untrusted comment: ";
constexpr std::string_view trustedPrefix = "trusted comment: ";
constexpr std::size_t algorithmSize = 2;

using Bytes = std::span<const std::uint8_t>;

/// Exactly `Size` bytes in Base64 with padding; nothing else is accepted.
template <std::size_t Size>
std::optional<std::array<std::uint8_t, Size>> decoded(std::string_view base64)
{
    std::array<std::uint8_t, Size> bytes = {};
    std::size_t size = 0;
    const char* end = nullptr;
    if (::sodium_base642bin(bytes.data(), bytes.size(), base64.data(), base64.size(), nullptr,
            &size, &end, sodium_base64_VARIANT_ORIGINAL)
            != 0
        || size != Size || end != base64.data() + base64.size())
        return std::nullopt;
    return bytes;
}

template <std::size_t Size>
void take(Bytes& from, std::array<std::uint8_t, Size>& into)
{
    std::ranges::copy(from.first(Size), into.begin());
    from = from.subspan(Size);
}

bool hasAlgorithm(Bytes bytes, std::string_view algorithm)
{
    return std::memcmp(bytes.data(), algorithm.data(), algorithmSize) == 0;
}

/// Takes the next line off `text`; nothing if no newline ends it.
std::optional<std::string_view> takeLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

const unsigned char* bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

bool isSigned(
    const std::array<std::uint8_t, 64>& signature, Bytes message, const MinisignPublicKey& key)
{
    return ::crypto_sign_verify_detached(
               signature.data(), message.data(), message.size(), key.ed25519.data())
        == 0;
}

}  // namespace

std::optional<MinisignPublicKey> MinisignPublicKey::parse(std::string_view base64)
{
    const auto bytes = decoded<algorithmSize + 8 + 32>(base64);
    if (!bytes || !hasAlgorithm(*bytes, keyAlgorithm))
        return std::nullopt;
    MinisignPublicKey key;
    Bytes rest = Bytes{*bytes}.subspan(algorithmSize);
    take(rest, key.keyID);
    take(rest, key.ed25519);
    return key;
}

std::optional<MinisignSignature> MinisignSignature::parse(std::string_view text)
{
    if (text.size() > mostBytes)
        return std::nullopt;
    const auto untrusted = takeLine(text);
    const auto first = takeLine(text);
    const auto trusted = takeLine(text);
    const auto second = takeLine(text);
    if (!untrusted || !first || !trusted || !second || !text.empty()
        || !untrusted->starts_with(untrustedPrefix) || !trusted->starts_with(trustedPrefix))
        return std::nullopt;

    const auto bytes = decoded<algorithmSize + 8 + 64>(*first);
    const auto global = decoded<64>(*second);
    if (!bytes || !global || !hasAlgorithm(*bytes, prehashed))
        return std::nullopt;
    MinisignSignature signature;
    Bytes rest = Bytes{*bytes}.subspan(algorithmSize);
    take(rest, signature.keyID);
    take(rest, signature.signature);
    signature.trustedComment = trusted->substr(trustedPrefix.size());
    signature.globalSignature = *global;
    return signature;
}

bool MinisignSignature::isValid(std::string_view content, const MinisignPublicKey& key) const
{
    if (::sodium_init() < 0 || keyID != key.keyID)
        return false;
    std::array<std::uint8_t, crypto_generichash_BYTES_MAX> hash = {};
    static_assert(hash.size() == 64);
    ::crypto_generichash(hash.data(), hash.size(), bytesOf(content), content.size(), nullptr, 0);

    std::vector<std::uint8_t> global{signature.begin(), signature.end()};
    global.insert(global.end(), trustedComment.begin(), trustedComment.end());
    return isSigned(signature, hash, key) && isSigned(globalSignature, global, key);
}

}  // namespace tidemark
