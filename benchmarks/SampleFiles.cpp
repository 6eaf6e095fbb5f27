#include "SampleFiles.h"

#include "FileDescriptor.h"
#include "SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <string_view>

namespace tidemark::bench::SampleFiles {

namespace {

constexpr std::size_t kindsInTurn = 100;

struct NamePattern {
    std::string_view beforeNumber;
    std::string_view afterNumber;
};

constexpr std::array<NamePattern, 10> commonNames{{
    {"Quarterly report ", ".pdf"},
    {"IMG_20240503_", ".jpg"},
    {"invoice-2024-05-", ".pdf"},
    {"Bank statement ", ".csv"},
    {"holiday photos ", ".zip"},
    {"meeting minutes ", ".docx"},
    {"budget draft v2 ", ".xlsx"},
    {"lecture recording ", ".mp4"},
    {"source-1.4.", ".tar.gz"},
    {"Boarding pass ", ".pdf"},
}};

/// Spreads neighbouring numbers over all of 64 bits.
std::uint64_t scattered(std::uint64_t number)
{
    number = (number ^ (number >> 31U)) * 0x9E3779B97F4A7C15U;
    return number ^ (number >> 29U);
}

NamePattern patternFor(std::size_t index)
{
    switch (index % kindsInTurn) {
    case 7:
    case 57:
        return {"Screenshot from day ", ".png"};
    case 21:
        return {"Installer-4.2-", ".dmg"};
    case 71:
        return {"Setup tools-", ".pkg"};
    case 42:
        return {"Notes of a talk ", ".md"};
    default:
        return commonNames[scattered(index) % commonNames.size()];
    }
}

std::string contentOf(const std::string& name)
{
    if (!name.ends_with(".md"))
        return {};
    return "---\ntitle: " + name.substr(0, name.size() - 3)
        + "\ndate: 2024-05-03\ntags: [talk]\n---\n\nWhat was said.\n";
}

/// Some moment in the last three years.
struct timespec dateOf(std::size_t index, std::size_t count)
{
    constexpr std::uint64_t threeYears = std::uint64_t{3} * 365 * 86'400;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto age = static_cast<std::time_t>(scattered(index + count) % threeYears + 86'400);
    return {.tv_sec = std::chrono::duration_cast<std::chrono::seconds>(now).count() - age,
        .tv_nsec = static_cast<long>(index % 1'000) * 1'000'000};
}

}  // namespace

std::string name(std::size_t index)
{
    // Scattered numbers of six digits, so that files are not made in the order in which they are shown.
    constexpr std::size_t prime = 700'001;
    constexpr std::size_t range = 900'000;
    const auto [beforeNumber, afterNumber] = patternFor(index);
    std::string name(beforeNumber);
    name += std::to_string(100'000 + index * prime % range);
    name += afterNumber;
    return name;
}

void make(const FileURL& folder, const std::string& name, std::size_t index, std::size_t count)
{
    const FileURL url = folder.appending(name);
    const FileDescriptor file(
        ::open(url.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (!file.isOpen())
        fail("cannot make", url, errno);
    const std::string content = contentOf(name);
    if (::write(file.get(), content.data(), content.size()) != static_cast<ssize_t>(content.size()))
        fail("cannot write", url, errno);
    const std::array<struct timespec, 2> times{dateOf(index, count), dateOf(index, count)};
    if (::futimens(file.get(), times.data()) != 0)
        fail("cannot date", url, errno);
}

}  // namespace tidemark::bench::SampleFiles
