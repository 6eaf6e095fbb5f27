#include "TestBundle.h"

#include "ZipFile.h"

#include <gtest/gtest.h>
#include <sodium.h>

#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tidemark {

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file)
{
    std::ifstream stream{file, std::ios::binary};
    return std::string{std::istreambuf_iterator<char>{stream}, {}};
}

mode_t modeOf(const fs::path& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
}

std::string octal(mode_t mode)
{
    std::ostringstream text;
    text << std::oct << (mode & 07777U);
    return text.str();
}

std::string hashOf(const std::string& content)
{
    std::array<unsigned char, crypto_hash_sha256_BYTES> hash = {};
    ::crypto_hash_sha256(
        hash.data(), reinterpret_cast<const unsigned char*>(content.data()), content.size());
    std::array<char, 2 * crypto_hash_sha256_BYTES + 1> text = {};
    return ::sodium_bin2hex(text.data(), text.size(), hash.data(), hash.size());
}

}  // namespace

TestBundle::TestBundle(const TemporaryFolder& parent, std::string name, const std::string& version,
    const TestDeveloper& developer)
    : m_parent(parent)
    , m_name(std::move(name))
{
    write("Info.json", R"({"CFBundleShortVersionString": ")" + version + "\"}");
    // Beside the bundle it notes that it ran.
    write("bin/tidemark",
        "#!/bin/sh\n"
        "bundle=$(dirname \"$(dirname \"$0\")\")\n"
        "echo \""
            + version
            + " $MARK\" >\"$bundle.started.new\"\n"
              "mv \"$bundle.started.new\" \"$bundle.started\"\n",
        0755);
    write("share/doc/copyright", "ours");
    fs::create_symlink("../doc/copyright", path("share/doc/link"));
    write("share/with blank/it's", "text");
    fs::remove(path("share/doc/link"));
    fs::create_symlink("../with blank/it's", path("share/doc/link"));
    fs::create_directories(path("Signature"));
    sign(developer, version);
    for (const auto& entry : fs::recursive_directory_iterator{m_parent.path(m_name)})
        if (entry.is_directory() && !entry.is_symlink())
            fs::permissions(entry.path(), fs::perms{0755});
    fs::permissions(m_parent.path(m_name), fs::perms{0755});
}

void TestBundle::write(const std::string& relative, const std::string& content, mode_t mode) const
{
    m_parent.write(m_name + '/' + relative, content);
    EXPECT_EQ(::chmod(path(relative).c_str(), mode), 0);
}

void TestBundle::sign(const TestDeveloper& developer, const std::string& version) const
{
    signText(developer, manifest(developer.identity().teamIdentifier, version));
}

void TestBundle::signText(const TestDeveloper& developer, const std::string& manifest) const
{
    write("Signature/manifest.json", manifest);
    write("Signature/manifest.json.minisig", developer.sign(manifest));
}

std::string TestBundle::manifest(const std::string& team, const std::string& version) const
{
    std::string files;
    const fs::path root = m_parent.path(m_name);
    for (const auto& entry : fs::recursive_directory_iterator{root}) {
        const std::string relative = entry.path().lexically_relative(root).string();
        if (relative.starts_with("Signature/"))
            continue;
        std::string facts;
        if (entry.is_symlink())
            facts = R"("target": ")" + fs::read_symlink(entry.path()).string() + '"';
        else if (entry.is_regular_file())
            facts = R"("mode": ")" + octal(modeOf(entry.path())) + R"(", "sha256": ")"
                + hashOf(contentOf(entry.path())) + '"';
        else
            continue;
        files.append(files.empty() ? "" : ", ")
            .append(R"({"path": ")")
            .append(relative)
            .append("\", ")
            .append(facts)
            .append("}");
    }
    return R"({"teamIdentifier": ")" + team + R"(", "version": ")" + version + R"(", "files": [)"
        + files + "]}";
}

std::map<std::string, std::string> TestBundle::snapshot() const
{
    std::map<std::string, std::string> all;
    const fs::path root = m_parent.path(m_name);
    all["."] = octal(modeOf(root));
    for (const auto& entry : fs::recursive_directory_iterator{root}) {
        std::string& facts = all[entry.path().lexically_relative(root).string()];
        facts = octal(modeOf(entry.path()));
        if (entry.is_symlink())
            facts += " -> " + fs::read_symlink(entry.path()).string();
        else if (entry.is_regular_file())
            facts += ' ' + contentOf(entry.path());
    }
    return all;
}

std::string TestBundle::archive(const std::string& prefix) const
{
    std::vector<ZipFile::Entry> entries;
    const fs::path root = m_parent.path(m_name);
    entries.push_back(ZipFile::folder(prefix + m_name));
    for (const auto& entry : fs::recursive_directory_iterator{root}) {
        const std::string name =
            prefix + m_name + '/' + entry.path().lexically_relative(root).string();
        if (entry.is_symlink())
            entries.push_back(ZipFile::link(name, fs::read_symlink(entry.path()).string()));
        else if (entry.is_directory())
            entries.push_back({name + '/', {}, modeOf(entry.path())});
        else
            entries.push_back({name, contentOf(entry.path()), modeOf(entry.path())});
    }
    return ZipFile::bytes(entries);
}

}  // namespace tidemark
