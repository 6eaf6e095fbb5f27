// Runs commands of tidemarkctl one after another in one process, so that thousands of worlds can be tried
// in the time that starting a program for each command would take.
//
// A request on standard input is a count and so many texts, each behind its length (32-bit, native byte
// order): the file for standard output, the file for standard error, then NAME=VALUE for the environment
// and the command's arguments, which begin behind the text "--". The answer on the former standard output
// is the exit status on a line.

#include "CommandRunner.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

[[noreturn]] void die(const char* reason)
{
    std::perror(reason);
    std::_Exit(EXIT_FAILURE);
}

/// Nothing at the end of the requests.
std::optional<std::uint32_t> readNumber()
{
    std::uint32_t number = 0;
    if (std::fread(&number, sizeof(number), 1, stdin) != 1)
        return std::nullopt;
    return number;
}

std::string readText()
{
    std::string text(readNumber().value_or(0), '\0');
    if (std::fread(text.data(), 1, text.size(), stdin) != text.size())
        die("a request is cut off");
    return text;
}

void redirect(int stream, const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || ::dup2(file, stream) < 0)
        die(path.c_str());
    ::close(file);
}

void setVariable(const std::string& assignment)
{
    const std::size_t equals = assignment.find('=');
    ::setenv(assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str(), 1);
}

int run(std::span<const std::string> request)
{
    redirect(STDOUT_FILENO, request[0]);
    redirect(STDERR_FILENO, request[1]);
    auto each = request.begin() + 2;
    for (; each != request.end() && *each != "--"; ++each)
        setVariable(*each);
    ::tzset();
    std::vector<const char*> arguments;
    std::transform(each + 1, request.end(), std::back_inserter(arguments),
        [](const std::string& text) { return text.c_str(); });
    return tidemark::runCommandLine(arguments);
}

}  // namespace

int main()
{
    const int answers = ::dup(STDOUT_FILENO);
    // What a sanitizer has to say at the end goes where the server's caller looks.
    const int errors = ::dup(STDERR_FILENO);
    constexpr std::uint32_t fewestTexts = 4;
    while (const std::optional<std::uint32_t> count = readNumber()) {
        std::vector<std::string> request(*count);
        std::ranges::generate(request, readText);
        if (*count < fewestTexts)
            die("a request is too short");
        const std::string answer = std::to_string(run(request)) + '\n';
        if (::write(answers, answer.data(), answer.size()) < 0)
            die("cannot answer");
    }
    ::dup2(errors, STDERR_FILENO);
    return EXIT_SUCCESS;
}
