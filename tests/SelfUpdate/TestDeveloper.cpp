#include "TestDeveloper.h"

#include <gtest/gtest.h>
#include <sodium.h>

#include <vector>

namespace tidemark {

namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, const auto& more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

std::string base64(const Bytes& bytes)
{
    constexpr int variant = sodium_base64_VARIANT_ORIGINAL;
    std::string text(sodium_base64_encoded_len(bytes.size(), variant), '\0');
    ::sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(), variant);
    text.pop_back();
    return text;
}

}  // namespace

TestDeveloper::TestDeveloper(std::string teamIdentifier)
    : m_team(std::move(teamIdentifier))
{
    EXPECT_GE(::sodium_init(), 0);
    ::crypto_sign_keypair(m_publicKey.data(), m_secretKey.data());
    ::randombytes_buf(m_keyID.data(), m_keyID.size());
}

DeveloperIdentity TestDeveloper::identity() const
{
    Bytes bytes{'E', 'd'};
    append(bytes, m_keyID);
    append(bytes, m_publicKey);
    return {.publicKey = base64(bytes), .teamIdentifier = m_team};
}

std::string TestDeveloper::sign(
    std::string_view content, std::string_view algorithm, std::string_view trustedComment) const
{
    std::array<std::uint8_t, 64> signature = {};
    const auto signBytes = [&](const Bytes& bytes) {
        ::crypto_sign_detached(
            signature.data(), nullptr, bytes.data(), bytes.size(), m_secretKey.data());
    };
    Bytes message{content.begin(), content.end()};
    if (algorithm == "ED") {
        Bytes hash(64);
        ::crypto_generichash(hash.data(), hash.size(), message.data(), message.size(), nullptr, 0);
        message = hash;
    }
    signBytes(message);
    Bytes first{algorithm.begin(), algorithm.end()};
    append(first, m_keyID);
    append(first, signature);

    Bytes global{signature.begin(), signature.end()};
    append(global, trustedComment);
    signBytes(global);
    return "untrusted comment: for a test\n" + base64(first) + "\ntrusted comment: "
        + std::string{trustedComment} + '\n' + base64({signature.begin(), signature.end()}) + '\n';
}

}  // namespace tidemark
