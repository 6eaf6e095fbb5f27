#include "BundleManifest.h"

#include "BundlePath.h"
#include "DecodingError.h"
#include "JSONDecoder.h"
#include "JSONDocument.h"

#include <sodium.h>

#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace tidemark {

namespace {

constexpr const char* fileName = "manifest.json";
constexpr mode_t mostPermissions = 0755;
constexpr mode_t readableByOwner = 0400;
constexpr std::string_view signatureFolder = "Signature";

/// Three octal digits, such as "644".
mode_t modeIn(const JSONDecoder& decoder)
{
    constexpr int octal = 8;
    const std::string_view text = decoder.stringView();
    mode_t mode = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), mode, octal);
    if (text.size() != 3 || error != std::errc{} || end != text.data() + text.size())
        decoder.fail("expected three octal digits");
    if ((mode & ~mostPermissions) != 0 || (mode & readableByOwner) == 0)
        decoder.fail("no mode for a file of a bundle");
    return mode;
}

std::array<std::uint8_t, 32> hashIn(const JSONDecoder& decoder)
{
    const std::string_view text = decoder.stringView();
    std::array<std::uint8_t, 32> hash = {};
    std::size_t size = 0;
    const char* end = nullptr;
    if (::sodium_hex2bin(hash.data(), hash.size(), text.data(), text.size(), nullptr, &size, &end)
            != 0
        || size != hash.size() || end != text.data() + text.size())
        decoder.fail("expected 64 hexadecimal digits");
    return hash;
}

std::string targetIn(const JSONDecoder& decoder, std::string_view path)
{
    std::string target = decoder.string();
    if (!BundlePath::staysInside(path, target))
        decoder.fail("the link leads out of the bundle");
    return target;
}

BundleManifest::Entry entryIn(const JSONDecoder& decoder, std::string_view path)
{
    if (const std::optional<JSONDecoder> target = decoder.find("target")) {
        if (decoder.find("mode") || decoder.find("sha256"))
            decoder.fail("a link has neither mode nor content");
        return BundleManifest::Link{targetIn(*target, path)};
    }
    return BundleManifest::File{modeIn(decoder["mode"]), hashIn(decoder["sha256"])};
}

std::string pathIn(const JSONDecoder& decoder)
{
    std::string path = decoder.string();
    if (!BundlePath::isSafe(path))
        decoder.fail("no path inside the bundle");
    if (path == signatureFolder || path.starts_with(std::string{signatureFolder} + '/'))
        decoder.fail("what signs the bundle cannot be signed");
    return path;
}

/// Whether one of the folders in which `path` lies is an entry itself.
bool liesBelowEntry(std::string_view path, const BundleManifest& manifest)
{
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/', slash + 1))
        if (manifest.entries.contains(path.substr(0, slash)))
            return true;
    return false;
}

BundleManifest manifestIn(const JSONDecoder& root)
{
    BundleManifest manifest{
        .teamIdentifier = root["teamIdentifier"].string(), .version = root["version"].string()};
    const std::vector<JSONDecoder> files = root["files"].elements();
    if (files.size() > BundleManifest::mostEntries)
        root.fail("too many files");
    for (const JSONDecoder& file : files) {
        std::string path = pathIn(file["path"]);
        BundleManifest::Entry entry = entryIn(file, path);
        if (!manifest.entries.emplace(std::move(path), std::move(entry)).second)
            file.fail("the path is there twice");
    }
    for (const auto& [path, entry] : manifest.entries)
        if (liesBelowEntry(path, manifest))
            root.fail("a path lies below another");
    return manifest;
}

}  // namespace

BundleManifest BundleManifest::parse(std::string text)
{
    if (text.size() > mostBytes)
        throw DecodingError{fileName, {}, "too large"};
    const JSONDocument document{std::move(text), fileName};
    return manifestIn(document.root());
}

}  // namespace tidemark
