#include "TrashRecord.h"

#include "Clock.h"
#include "FileDescriptor.h"
#include "Folders.h"
#include "SystemCall.h"
#include "Text.h"
#include "TimeZone.h"

#include <QByteArray>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace tidemark {

namespace {

constexpr std::string_view recordExtension = ".trashinfo";
constexpr std::size_t longestName = 255 - recordExtension.size();

/// Local time without a zone, as the Trash specification wants it.
std::string deletionDate(Date date)
{
    const LocalTime time = TimeZone::current().localTime(date);
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%04lld-%02u-%02uT%02u:%02u:%02u",
        static_cast<long long>(time.year), time.month, time.day, time.hour, time.minute,
        time.second);
    return text.data();
}

void writeAll(const FileDescriptor& file, std::string_view content, const FileURL& url)
{
    constexpr const char* cannotWrite = "cannot write the Trash record";
    while (!content.empty()) {
        const ssize_t written =
            uninterrupted([&] { return ::write(file.get(), content.data(), content.size()); });
        if (written < 0)
            fail(cannotWrite, url, errno);
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    if (uninterrupted([&] { return ::fsync(file.get()); }) != 0)
        fail(cannotWrite, url, errno);
}

FileURL recordOf(const FileURL& infoFolder, std::string_view name)
{
    return infoFolder.appending(std::string{name} + std::string{recordExtension});
}

bool isInsideCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// At most `size` bytes of `text`, without a part of a character at the end.
std::string_view shortened(std::string_view text, std::size_t size)
{
    if (text.size() <= size)
        return text;
    constexpr std::size_t longestRest = 3;  // of a character behind its first byte
    std::size_t end = size;
    while (end > 0 && size - end < longestRest && isInsideCharacter(text[end]))
        --end;
    // No text at all, then, but bytes.
    return text.substr(0, isInsideCharacter(text[end]) ? size : end);
}

}  // namespace

std::optional<TrashRecord> TrashRecord::create(const HeldFolder& infoFolder, std::string_view name,
    std::string_view path, OwnChanges ownChanges)
{
    const HeldEntry place{infoFolder, recordOf(infoFolder.url(), name)};
    // Ends after the file is closed.
    const OwnChanges::Guard change = ownChanges.begin({place.url});
    const FileDescriptor file{uninterrupted([&] {
        return ::openat(infoFolder.descriptor(), place.name(),
            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    })};
    if (!file.isOpen() && errno == EEXIST)
        return std::nullopt;
    if (!file.isOpen())
        fail("cannot make the Trash record", place.url, errno);

    TrashRecord record{place, ownChanges};
    writeAll(file, text(path, SystemClock{}.now()), place.url);
    return record;
}

std::string TrashRecord::text(std::string_view path, Date deleted)
{
    const auto bytes = QByteArray::fromRawData(path.data(), static_cast<qsizetype>(path.size()));
    return "[Trash Info]\nPath=" + bytes.toPercentEncoding("/").toStdString()
        + "\nDeletionDate=" + deletionDate(deleted) + '\n';
}

void TrashRecord::remove(const HeldFolder& infoFolder, std::string_view name, OwnChanges ownChanges)
{
    Folders::removeName(HeldEntry{infoFolder, recordOf(infoFolder.url(), name)}, ownChanges);
}

std::string TrashRecord::nameInTrash(std::string_view name, int number)
{
    std::string_view stem = withoutPathExtension(name);
    std::string ending = number > 1 ? ' ' + std::to_string(number) : std::string{};
    // What is longer is no extension that any program knows.
    constexpr std::size_t longestExtension = 64;
    if (const std::string_view extension = pathExtension(name); extension.size() > longestExtension)
        stem = name;
    else if (!extension.empty())
        ending += '.' + std::string{extension};
    return std::string{shortened(stem, longestName - ending.size())} + ending;
}

TrashRecord::TrashRecord(HeldEntry place, OwnChanges ownChanges)
    : m_place(std::move(place))
    , m_ownChanges(ownChanges)
{
}

TrashRecord::TrashRecord(TrashRecord&& other) noexcept
    : m_place(std::move(other.m_place))
    , m_ownChanges(other.m_ownChanges)
    , m_isKept(std::exchange(other.m_isKept, true))
{
}

TrashRecord::~TrashRecord()
{
    if (!m_isKept)
        Folders::removeName(m_place, m_ownChanges);
}

}  // namespace tidemark
