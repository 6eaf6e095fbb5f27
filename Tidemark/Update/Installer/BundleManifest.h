#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <variant>

#include <sys/types.h>

namespace tidemark {

/// What an application bundle holds, as its maker signed it: "Signature/manifest.json" in docs/formats.md.
/// A plain value.
struct BundleManifest {
    /// A regular file.
    struct File {
        mode_t mode = 0;
        std::array<std::uint8_t, 32> sha256 = {};

        bool operator==(const File&) const = default;
    };

    /// A symbolic link that stays inside the bundle.
    struct Link {
        std::string target = {};

        bool operator==(const Link&) const = default;
    };

    using Entry = std::variant<File, Link>;

    std::string teamIdentifier = {};
    std::string version = {};

    /// By path relative to the bundle, which is BundlePath::isSafe. No entry lies below another.
    std::map<std::string, Entry, std::less<>> entries = {};

    static constexpr std::size_t mostBytes = std::size_t{4} << 20U;
    static constexpr std::size_t mostEntries = 10'000;

    /// Throws DecodingError, with "manifest.json" as the file, for everything that is not a whole manifest:
    /// too large, a path that is not safe or there twice, a link that leads out, a mode with more than rwx for
    /// the owner and r-x for the others.
    static BundleManifest parse(std::string text);

    bool operator==(const BundleManifest&) const = default;
};

}  // namespace tidemark
