#include "Options.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace tidemark::bench {

namespace {

FileURL urlOf(const std::filesystem::path& folder)
{
    return FileURL::directory(std::filesystem::canonical(folder).string());
}

FileURL defaultFolder()
{
    if (std::filesystem::is_directory("build"))
        return urlOf("build");
    return urlOf(std::filesystem::temp_directory_path());
}

/// The value of "OPTION=VALUE" or "OPTION VALUE" at `index`, which moves on to the value.
std::optional<std::string> valueAt(
    int& index, int count, char** arguments, const std::string& option)
{
    const std::string_view argument = arguments[index];
    if (!argument.starts_with(option))
        return std::nullopt;
    const std::string_view rest = argument.substr(option.size());
    if (rest.starts_with('='))
        return std::string(rest.substr(1));
    if (!rest.empty())
        return std::nullopt;
    if (index + 1 == count)
        throw std::invalid_argument(option + " needs a value");
    return arguments[++index];
}

Seconds secondsOf(const std::string& text)
{
    std::size_t end = 0;
    double value = 0;
    try {
        value = std::stod(text, &end);
    } catch (const std::exception&) {
        end = 0;
    }
    if (end == 0 || end != text.size() || !(value > 0) || value > 3'600)
        throw std::invalid_argument("not a number of seconds from 0 to 3600: " + text);
    return Seconds(value);
}

}  // namespace

Options Options::parse(int count, char** arguments)
{
    Options options;
    // Later ones win, so these are defaults.
    options.others = {arguments[0], "--benchmark_repetitions=5", "--benchmark_min_time=0.1"};
    std::optional<std::string> folder;
    for (int index = 1; index < count; ++index) {
        if (auto value = valueAt(index, count, arguments, "--folder"))
            folder = std::move(value);
        else if (auto rest = valueAt(index, count, arguments, "--rest"))
            options.rest = secondsOf(*rest);
        else
            options.others.emplace_back(arguments[index]);
    }
    options.folder = folder ? urlOf(*folder) : defaultFolder();
    return options;
}

void Options::printHelp()
{
    std::puts(
        "usage: tidemark-bench [--folder DIR] [--rest SECONDS] [OPTION OF GOOGLE BENCHMARK]...\n"
        "\n"
        "Measures Tidemark beside yardsticks and prints the ratios.\n"
        "\n"
        "  --folder DIR   where the disk work is done, beside a tmpfs; by default in ./build "
        "or, where\n"
        "                 that is missing, in $TMPDIR or /tmp\n"
        "  --rest SECONDS for how long programs that have nothing to do are watched, by default "
        "10\n"
        "\n"
        "Five repetitions, unless --benchmark_repetitions says otherwise. Google Benchmark's "
        "own:\n");
    benchmark::PrintDefaultHelp();
}

}  // namespace tidemark::bench
