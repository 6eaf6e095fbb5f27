#include "BundleManifest.h"
#include "BundlePath.h"
#include "DecodingError.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// Whatever stands in a bundle's manifest: it is read without harm, and what comes of it stays in the bundle.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    try {
        const BundleManifest manifest =
            BundleManifest::parse(std::string{reinterpret_cast<const char*>(data), size});
        for (const auto& [path, entry] : manifest.entries) {
            if (!BundlePath::isSafe(path) || path.starts_with("Signature/"))
                std::abort();
            const auto* link = std::get_if<BundleManifest::Link>(&entry);
            if (link && !BundlePath::staysInside(path, link->target))
                std::abort();
            const auto* file = std::get_if<BundleManifest::File>(&entry);
            if (file && (file->mode & ~mode_t{0755}) != 0)
                std::abort();
        }
    } catch (const DecodingError&) {
        // is what most texts are
    }
    return 0;
}
