#include "BundleVerifier.h"

#include "BundleManifest.h"
#include "FailureText.h"
#include "FileDescriptor.h"
#include "JSONDecoder.h"
#include "JSONDocument.h"
#include "MinisignSignature.h"
#include "Overloaded.h"
#include "SystemCall.h"
#include "UpdateError.h"
#include "Updater.h"

#include <sodium.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <functional>
#include <memory>
#include <string_view>

namespace tidemark {

namespace {

constexpr const char* infoName = "Info.json";
constexpr const char* programName = "bin/tidemark";
constexpr const char* manifestName = "Signature/manifest.json";
constexpr const char* signatureName = "Signature/manifest.json.minisig";
constexpr std::size_t mostInfoBytes = 64 << 10;
constexpr mode_t folderMode = 0755;
constexpr mode_t signatureMode = 0644;
constexpr mode_t modeBits = 07777;
constexpr mode_t executable = 0100;
constexpr int deepestFolder = 32;

[[noreturn]] void refuse(const std::string& reason)
{
    throw UpdateError{UpdateError::Case::badSignature, "the bundle is refused: " + reason};
}

[[noreturn]] void refuse(std::string_view path, const char* reason)
{
    refuse(std::string{path} + ' ' + reason);
}

[[noreturn]] void refuse(std::string_view path, int number)
{
    refuse(std::string{path} + ": " + systemError(number).message());
}

void stopIf(const std::atomic<bool>& isCancelled)
{
    if (isCancelled)
        throw std::system_error{std::make_error_code(std::errc::operation_canceled)};
}

struct stat statusOf(const FileDescriptor& file, std::string_view path)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        refuse(path, errno);
    return status;
}

/// Opens one entry of an open folder without following it; a device or pipe is not waited for.
FileDescriptor openedIn(int folder, const char* name, int flags, std::string_view path)
{
    FileDescriptor file{uninterrupted([&] {
        return ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags);
    })};
    if (!file.isOpen())
        refuse(path, errno);
    return file;
}

/// Hands the content of a file to `use` block by block.
template <typename Use>
void readBlocks(const FileDescriptor& file, std::string_view path,
    const std::atomic<bool>& isCancelled, Use use)
{
    std::array<char, 64 << 10> block;
    for (;;) {
        stopIf(isCancelled);
        const ssize_t size =
            uninterrupted([&] { return ::read(file.get(), block.data(), block.size()); });
        if (size < 0)
            refuse(path, errno);
        if (size == 0)
            return;
        use(std::string_view{block.data(), static_cast<std::size_t>(size)});
    }
}

/// Verifies one bundle.
class Verification {
public:
    Verification(const FileURL& bundle, const std::atomic<bool>& isCancelled)
        : m_isCancelled(isCancelled)
        , m_bundle(openedIn(AT_FDCWD, systemPath(bundle), O_DIRECTORY, bundle.path()))
    {
    }

    std::string read(const char* path, std::size_t mostBytes) const
    {
        const FileDescriptor folder = folderOf(path);
        const FileDescriptor file = openedIn(folder.get(), baseName(path), 0, path);
        if (!S_ISREG(statusOf(file, path).st_mode))
            refuse(path, "is no file");
        std::string content;
        readBlocks(file, path, m_isCancelled, [&](std::string_view block) {
            content += block;
            if (content.size() > mostBytes)
                refuse(path, "is too large");
        });
        return content;
    }

    /// The bundle holds what the manifest names and nothing else.
    void compare(const BundleManifest& manifest)
    {
        m_manifest = &manifest;
        m_left = manifest.entries.size();
        compareFolder(m_bundle, {}, 0);
        if (m_left != 0)
            refuse("a file is missing");
    }

private:
    static const char* baseName(const char* path)
    {
        const std::string_view text{path};
        const std::size_t slash = text.rfind('/');
        return slash == std::string_view::npos ? path : path + slash + 1;
    }

    /// The folder of a path with at most one of them.
    FileDescriptor folderOf(const char* path) const
    {
        const std::string_view text{path};
        const std::size_t slash = text.rfind('/');
        const std::string name{slash == std::string_view::npos ? "." : text.substr(0, slash)};
        return openedIn(m_bundle.get(), name.c_str(), O_DIRECTORY, path);
    }

    // NOLINTNEXTLINE(misc-no-recursion): the depth is bounded.
    void compareFolder(const FileDescriptor& folder, const std::string& path, int depth)
    {
        stopIf(m_isCancelled);
        if (depth > deepestFolder)
            refuse(path, "is too deep");
        if ((statusOf(folder, path).st_mode & modeBits) != folderMode)
            refuse(path + "/", "has another mode");
        bool isEmpty = true;
        forEachName(folder, path, [&](const char* name) {
            isEmpty = false;
            compareEntry(folder, name, path.empty() ? name : path + '/' + name, depth);
        });
        if (isEmpty)
            refuse(path, "is an empty folder");
    }

    template <typename Use>
    static void forEachName(const FileDescriptor& folder, const std::string& path, Use use)
    {
        // A description of its own, since the listing moves its position.
        FileDescriptor listed = openedIn(folder.get(), ".", O_DIRECTORY, path);
        const std::unique_ptr<DIR, int (*)(DIR*)> directory{
            ::fdopendir(listed.get()), [](DIR* open) { return ::closedir(open); }};
        if (!directory)
            refuse(path, errno);
        listed.release();
        errno = 0;
        while (const dirent* entry = ::readdir(directory.get())) {
            const std::string_view name{entry->d_name};
            if (name != "." && name != "..")
                use(entry->d_name);
            errno = 0;
        }
        if (errno != 0)
            refuse(path, errno);
    }

    // NOLINTNEXTLINE(misc-no-recursion): the depth is bounded.
    void compareEntry(
        const FileDescriptor& folder, const char* name, const std::string& path, int depth)
    {
        struct stat status = {};
        if (::fstatat(folder.get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            refuse(path, errno);
        if (S_ISDIR(status.st_mode)) {
            compareFolder(openedIn(folder.get(), name, O_DIRECTORY, path), path, depth + 1);
            return;
        }
        if (path == manifestName || path == signatureName) {
            if (!S_ISREG(status.st_mode) || (status.st_mode & modeBits) != signatureMode)
                refuse(path, "has another mode");
            return;
        }
        const auto entry = m_manifest->entries.find(path);
        if (entry == m_manifest->entries.end())
            refuse(path, "is one too many");
        --m_left;
        std::visit(
            Overloaded{
                [&](const BundleManifest::File& file) { compareFile(folder, name, path, file); },
                [&](const BundleManifest::Link& link) { compareLink(folder, name, path, link); },
            },
            entry->second);
    }

    void compareFile(const FileDescriptor& folder, const char* name, const std::string& path,
        const BundleManifest::File& expected) const
    {
        const FileDescriptor file = openedIn(folder.get(), name, 0, path);
        const struct stat status = statusOf(file, path);
        if (!S_ISREG(status.st_mode))
            refuse(path, "is no file");
        if ((status.st_mode & modeBits) != expected.mode)
            refuse(path, "has another mode");
        // A second name of the file would let it be changed from outside.
        if (status.st_nlink != 1)
            refuse(path, "has a second name");
        if (hashOf(file, path) != expected.sha256)
            refuse(path, "has another content");
    }

    std::array<std::uint8_t, crypto_hash_sha256_BYTES> hashOf(
        const FileDescriptor& file, const std::string& path) const
    {
        crypto_hash_sha256_state state;
        ::crypto_hash_sha256_init(&state);
        readBlocks(file, path, m_isCancelled, [&](std::string_view block) {
            ::crypto_hash_sha256_update(
                &state, reinterpret_cast<const unsigned char*>(block.data()), block.size());
        });
        std::array<std::uint8_t, crypto_hash_sha256_BYTES> hash = {};
        ::crypto_hash_sha256_final(&state, hash.data());
        return hash;
    }

    static void compareLink(const FileDescriptor& folder, const char* name, const std::string& path,
        const BundleManifest::Link& expected)
    {
        std::array<char, PATH_MAX> target;
        const ssize_t size = ::readlinkat(folder.get(), name, target.data(), target.size());
        if (size < 0)
            refuse(path, errno);
        if (std::string_view{target.data(), static_cast<std::size_t>(size)} != expected.target)
            refuse(path, "leads elsewhere");
    }

    const std::atomic<bool>& m_isCancelled;
    FileDescriptor m_bundle;
    const BundleManifest* m_manifest = nullptr;
    std::size_t m_left = 0;  ///< Entries of the manifest that were not met yet.
};

/// The text of the manifest, which nobody but the developer can have written.
std::string signedManifest(const Verification& bundle, const DeveloperIdentity& identity)
{
    const auto key = MinisignPublicKey::parse(identity.publicKey);
    if (!key)
        refuse("there is no key to check it with");
    std::string manifest = bundle.read(manifestName, BundleManifest::mostBytes);
    const auto signature =
        MinisignSignature::parse(bundle.read(signatureName, MinisignSignature::mostBytes));
    if (!signature || !signature->isValid(manifest, *key))
        refuse("the developer has not signed it");
    return manifest;
}

void requireProgram(const BundleManifest& manifest)
{
    const auto isFile = [&](const char* path, mode_t mode) {
        const auto entry = manifest.entries.find(path);
        if (entry == manifest.entries.end())
            return false;
        const auto* file = std::get_if<BundleManifest::File>(&entry->second);
        return file && (file->mode & mode) == mode;
    };
    if (!isFile(infoName, 0) || !isFile(programName, executable))
        refuse("it holds no program");
}

std::string versionIn(std::string info)
{
    const JSONDocument document{std::move(info), infoName};
    return document.root()["CFBundleShortVersionString"].string();
}

}  // namespace

BundleVerifier::BundleVerifier(DeveloperIdentity identity, std::string runningVersion)
    : m_identity(std::move(identity))
    , m_runningVersion(std::move(runningVersion))
{
}

void BundleVerifier::verify(const FileURL& bundle, const std::string& announcedVersion,
    const std::atomic<bool>& isCancelled) const
try {
    Verification verification{bundle, isCancelled};
    // Nothing is read out of it before it is known who wrote it.
    const BundleManifest manifest = BundleManifest::parse(signedManifest(verification, m_identity));
    if (manifest.teamIdentifier != m_identity.teamIdentifier)
        refuse("it is another team's");
    if (manifest.version != announcedVersion)
        refuse("it is version " + manifest.version + ", not " + announcedVersion);
    if (!Updater::isNewer(manifest.version, m_runningVersion))
        refuse("version " + manifest.version + " is not newer than " + m_runningVersion);
    requireProgram(manifest);
    verification.compare(manifest);
    if (versionIn(verification.read(infoName, mostInfoBytes)) != manifest.version)
        refuse("Info.json names another version");
} catch (const UpdateError&) {
    throw;
} catch (const std::system_error& error) {
    if (error.code() == std::errc::operation_canceled)
        throw;
    refuse(failureText(error));
} catch (const std::runtime_error& error) {
    refuse(failureText(error));
}

}  // namespace tidemark
