#include "InstallReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

namespace tidemark {

namespace {

using Failure = InstallReport::Failure;
using Case = UpdateError::Case;

template <typename Error>
std::exception_ptr caught(const Error& error)
{
    return std::make_exception_ptr(error);
}

}  // namespace

TEST(InstallReport, IsALine)
{
    const struct {
        InstallReport report;
        const char* line;
    } examples[] = {
        {{UpdateProgress{.received = 0}}, "progress 0"},
        {{UpdateProgress{.received = 7, .total = 4'294'967'296}}, "progress 7 4294967296"},
        {{InstallReport::SwapWaits{}}, "waits"},
        {{Failure{.reason = "no space left"}}, "failed other no space left"},
        {{Failure{}}, "failed other "},
        {{Failure{Case::download, "status 404"}}, "failed download status 404"},
        {{Failure{Case::unpack, "x"}}, "failed unpack x"},
        {{Failure{Case::notFound, "x"}}, "failed notFound x"},
        {{Failure{Case::badSignature, "x"}}, "failed badSignature x"},
        {{Failure{Case::readOnlyLocation, "x"}}, "failed readOnlyLocation x"},
    };
    for (const auto& example : examples) {
        EXPECT_EQ(example.report.line(), std::string{example.line} + '\n');
        EXPECT_EQ(InstallReport::parse(example.line), example.report) << example.line;
    }
}

TEST(InstallReport, AReasonOfSeveralLinesStaysOneReport)
{
    EXPECT_EQ(InstallReport{Failure{.reason = "one\ntwo\n"}}.line(), "failed other one two \n");
}

TEST(InstallReport, NothingElseIsOne)
{
    for (const char* line : {"", " ", "progress", "progress ", "progress x", "progress -1",
             "progress 1 x", "progress 1 2 3", "progress 99999999999999999999", "waits now",
             "waiting", "failed", "failed unknown x", "Progress 1"})
        EXPECT_EQ(InstallReport::parse(line), std::nullopt) << line;
}

TEST(InstallReport, AFailureKeepsItsCaseAndReason)
{
    const struct {
        std::exception_ptr error;
        Failure failure;
    } examples[] = {
        {caught(UpdateError{Case::badSignature, "another key"}),
            {Case::badSignature, "another key"}},
        {caught(std::runtime_error{"the server is silent"}), {{}, "the server is silent"}},
        {caught(std::filesystem::filesystem_error{
             "cannot write", "/a/b", std::make_error_code(std::errc::no_space_on_device)}),
            {{}, "cannot write /a/b: No space left on device"}},
    };
    for (const auto& example : examples) {
        EXPECT_EQ(Failure::of(example.error), example.failure);
        EXPECT_EQ(Failure::of(example.failure.error()), example.failure);
    }
}

}  // namespace tidemark
