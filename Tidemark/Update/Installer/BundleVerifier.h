#pragma once

#include "DeveloperIdentity.h"
#include "FileURL.h"

#include <atomic>
#include <string>

namespace tidemark {

/// Tells whether an application bundle is what its maker has signed. Any thread.
///
/// A bundle is a folder that holds "Info.json" with a string "CFBundleShortVersionString",
/// "bin/tidemark", "Signature/manifest.json" with its signature "Signature/manifest.json.minisig", and
/// exactly what that manifest names. Folders are of mode 755 and there for files only; an empty one is
/// one too many.
class BundleVerifier {
public:
    /// `runningVersion` is to be older than the bundle's.
    BundleVerifier(DeveloperIdentity identity, std::string runningVersion);

    /// Returns for a bundle that the developer has signed, of the version that was announced, and nothing
    /// else. Links are not followed, at `bundle` neither. Throws UpdateError of the kind `badSignature`
    /// for everything else, whatever fails; and operation_canceled, a system_error, soon after
    /// `isCancelled` has become true.
    ///
    /// What was verified stays so only as long as nobody can change it: the folder above belongs to the
    /// user alone.
    void verify(const FileURL& bundle, const std::string& announcedVersion,
        const std::atomic<bool>& isCancelled) const;

private:
    DeveloperIdentity m_identity;
    std::string m_runningVersion;
};

}  // namespace tidemark
