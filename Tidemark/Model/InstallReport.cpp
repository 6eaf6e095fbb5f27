#include "InstallReport.h"

#include "FailureText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace tidemark {

namespace {

struct NamedCase {
    UpdateError::Case kind;
    std::string_view name;
};

constexpr std::array namedCases{
    NamedCase{UpdateError::Case::download, "download"},
    NamedCase{UpdateError::Case::unpack, "unpack"},
    NamedCase{UpdateError::Case::notFound, "notFound"},
    NamedCase{UpdateError::Case::badSignature, "badSignature"},
    NamedCase{UpdateError::Case::readOnlyLocation, "readOnlyLocation"},
};
constexpr std::string_view otherCase = "other";

constexpr std::string_view progressWord = "progress";
constexpr std::string_view waitsWord = "waits";
constexpr std::string_view failedWord = "failed";

std::string_view nameOf(std::optional<UpdateError::Case> kind)
{
    const auto* const found =
        std::ranges::find_if(namedCases, [&](const NamedCase& each) { return each.kind == kind; });
    return found == namedCases.end() ? otherCase : found->name;
}

/// Takes what stands before the next blank.
std::string_view takeWord(std::string_view& text)
{
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    return word;
}

std::optional<std::int64_t> number(std::string_view word)
{
    std::int64_t value = 0;
    const char* const end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, value);
    if (error != std::errc{} || rest != end || value < 0)
        return {};
    return value;
}

std::optional<InstallReport> progressIn(std::string_view text)
{
    const auto received = number(takeWord(text));
    if (!received)
        return {};
    if (text.empty())
        return InstallReport{UpdateProgress{.received = *received}};
    const auto total = number(text);
    if (!total)
        return {};
    return InstallReport{UpdateProgress{.received = *received, .total = total}};
}

std::optional<InstallReport> failureIn(std::string_view text)
{
    const std::string_view name = takeWord(text);
    InstallReport::Failure failure{.reason = std::string{text}};
    if (name == otherCase)
        return InstallReport{std::move(failure)};
    const auto* const found = std::ranges::find(namedCases, name, &NamedCase::name);
    if (found == namedCases.end())
        return {};
    failure.kind = found->kind;
    return InstallReport{std::move(failure)};
}

std::string textOf(const UpdateProgress& progress)
{
    std::string text = std::string{progressWord} + ' ' + std::to_string(progress.received);
    if (progress.total)
        text += ' ' + std::to_string(*progress.total);
    return text;
}

std::string textOf(const InstallReport::SwapWaits& /*waits*/)
{
    return std::string{waitsWord};
}

std::string textOf(const InstallReport::Failure& failure)
{
    std::string text =
        std::string{failedWord} + ' ' + std::string{nameOf(failure.kind)} + ' ' + failure.reason;
    std::ranges::replace(text, '\n', ' ');
    return text;
}

}  // namespace

InstallReport::Failure InstallReport::Failure::of(const std::exception_ptr& error)
{
    std::optional<UpdateError::Case> kind;
    try {
        std::rethrow_exception(error);
    } catch (const UpdateError& updateError) {
        kind = updateError.kind();
    } catch (...) {
        // The reason tells.
    }
    return {.kind = kind, .reason = failureText(error)};
}

std::exception_ptr InstallReport::Failure::error() const
{
    return kind ? std::make_exception_ptr(UpdateError{*kind, reason})
                : std::make_exception_ptr(std::runtime_error{reason});
}

std::string InstallReport::line() const
{
    return std::visit([](const auto& each) { return textOf(each); }, content) + '\n';
}

std::optional<InstallReport> InstallReport::parse(std::string_view line)
{
    const std::string_view word = takeWord(line);
    if (word == progressWord)
        return progressIn(line);
    if (word == failedWord)
        return failureIn(line);
    if (word == waitsWord && line.empty())
        return InstallReport{SwapWaits{}};
    return {};
}

}  // namespace tidemark
