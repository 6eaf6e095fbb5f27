#pragma once

#include "DeveloperIdentity.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tidemark {

/// Somebody with a key, who signs as minisign(1) does.
class TestDeveloper {
public:
    explicit TestDeveloper(std::string teamIdentifier = "TEAM000001");

    DeveloperIdentity identity() const;

    /// A signature file for `content`; "Ed" is the algorithm of the legacy form.
    std::string sign(std::string_view content, std::string_view algorithm = "ED",
        std::string_view trustedComment = "made for a test") const;

    /// Signs with this one's key but in the name of another's.
    void takeKeyIDOf(const TestDeveloper& other) { m_keyID = other.m_keyID; }

private:
    std::string m_team;
    std::array<std::uint8_t, 8> m_keyID = {};
    std::array<std::uint8_t, 32> m_publicKey = {};
    std::array<std::uint8_t, 64> m_secretKey = {};
};

}  // namespace tidemark
