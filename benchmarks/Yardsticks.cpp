#include "Yardsticks.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemark::bench::Yardsticks {

namespace {

FileDescriptor open(const FileURL& url, int flags)
{
    FileDescriptor file(::open(url.path().c_str(), flags | O_CLOEXEC, 0600));
    if (!file.isOpen())
        fail("cannot open", url, errno);
    return file;
}

void writeAll(int file, std::string_view text, const FileURL& url)
{
    while (!text.empty()) {
        const ssize_t written =
            uninterrupted([&] { return ::write(file, text.data(), text.size()); });
        if (written < 0)
            fail("cannot write", url, errno);
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

simdjson::padded_string readAll(const FileURL& url)
{
    const FileDescriptor file = open(url, O_RDONLY);
    struct stat status;
    if (::fstat(file.get(), &status) != 0)
        fail("cannot examine", url, errno);
    simdjson::padded_string text(static_cast<std::size_t>(status.st_size));
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t size = uninterrupted(
            [&] { return ::read(file.get(), text.data() + done, text.size() - done); });
        if (size <= 0)
            fail("cannot read", url, size < 0 ? errno : EIO);
        done += static_cast<std::size_t>(size);
    }
    return text;
}

}  // namespace

void replaceDurably(const FileURL& url, std::span<const std::string_view> pieces)
{
    const FileURL folder = url.parent();
    const FileURL temporary = folder.appending(".yardstick.tmp");
    FileDescriptor file = open(temporary, O_WRONLY | O_CREAT | O_EXCL);
    for (const std::string_view piece : pieces)
        writeAll(file.get(), piece, temporary);
    if (::fdatasync(file.get()) != 0)
        fail("cannot flush", temporary, errno);
    if (::rename(temporary.path().c_str(), url.path().c_str()) != 0)
        fail("cannot rename", temporary, url, errno);
    const FileDescriptor directory = open(folder, O_RDONLY | O_DIRECTORY);
    if (::fsync(directory.get()) != 0)
        fail("cannot flush", folder, errno);
}

void rename(const FileURL& from, const FileURL& to)
{
    if (::renameat2(AT_FDCWD, from.path().c_str(), AT_FDCWD, to.path().c_str(), RENAME_NOREPLACE)
        != 0)
        fail("cannot rename", from, to, errno);
}

ParsedFile readAndParse(const FileURL& url)
{
    const simdjson::padded_string text = readAll(url);
    ParsedFile parsed{.parser = std::make_unique<simdjson::dom::parser>(), .root = {}};
    parsed.root = parsed.parser->parse(text);
    return parsed;
}

}  // namespace tidemark::bench::Yardsticks
