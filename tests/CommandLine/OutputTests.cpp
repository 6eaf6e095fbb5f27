#include "CommandLineFixture.h"
#include "PseudoTerminal.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tidemark {
namespace {

using testing::HasSubstr;
using testing::Not;

class Output : public CommandLineFixture {
protected:
    Outcome runWith(const ProgramStart& how) const
    {
        ProgramProcess process{how};
        const int status = process.wait();
        return {status, "", how.errorFile.empty() ? "" : readError()};
    }

    ProgramStart startWithErrorFile(std::vector<std::string> arguments) const
    {
        ProgramStart how = start(std::move(arguments));
        m_errors.write("err", "");
        how.errorFile = m_errors.path("err");
        return how;
    }

    std::string readError() const { return m_errors.read("err"); }

    /// What `arguments` print on a terminal.
    std::string onTerminal(const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& variables = {}) const
    {
        PseudoTerminal terminal;
        ProgramStart how = start(arguments);
        how.outputFile = terminal.path();
        for (const auto& [name, value] : variables)
            how.environment[name] = value;
        ProgramProcess process{how};
        EXPECT_EQ(process.wait(), 0);
        return terminal.readAll();
    }

private:
    TemporaryFolder m_errors;
};

TEST_F(Output, ToAFullDiskFailsWithAMessage)
{
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"status"}, {"status", "--json"}, {"preview", "--json"}, {"--help"}}) {
        ProgramStart how = startWithErrorFile(arguments);
        how.outputFile = "/dev/full";

        const Outcome outcome = runWith(how);

        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.error,
            "tidemarkctl: cannot write to standard output: No space left on device\n");
    }
}

TEST_F(Output, ToAClosedPipeFailsWithAMessage)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::close(ends[0]);
    ProgramStart how = startWithErrorFile({"status"});
    how.outputDescriptor = ends[1];

    const Outcome outcome = runWith(how);
    ::close(ends[1]);

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "tidemarkctl: cannot write to standard output: Broken pipe\n");
}

TEST_F(Output, ToAClosedStreamFailsAndReachesNoOtherFile)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    ProgramStart how = startWithErrorFile({"sweep"});
    how.outputFile.clear();

    const Outcome outcome = runWith(how);

    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("cannot write to standard output: Bad file descriptor"));
    EXPECT_EQ(home().read("Filed/a.pdf"), "A");
    for (const std::string& file : everything())
        EXPECT_THAT(file, Not(HasSubstr("Moved 1 file")));
    EXPECT_EQ(json({"activity"}).array().size(), 1);
}

TEST_F(Output, WithoutAnErrorStreamStillTellsByTheStatus)
{
    ProgramStart how = start({"nonsense"});
    how.errorFile.clear();

    EXPECT_EQ(runWith(how).status, 2);
}

TEST_F(Output, ShowsNoNameRaw)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a\nb\x1b[31m.pdf", "A");
    home().write("in/c\u202Efdp.pdf", "C");

    for (const char* command : {"preview", "sweep", "activity", "undo"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = run({command});

        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, HasSubstr(R"(a\nb\x1b[31m.pdf)"));
        EXPECT_THAT(outcome.output, HasSubstr(R"(c\u{202e}fdp.pdf)"));
        EXPECT_THAT(outcome.output, Not(HasSubstr("\x1b")));
        EXPECT_THAT(outcome.output, Not(HasSubstr("\u202E")));
    }
}

TEST_F(Output, ShowsNoNameRawInErrorsEither)
{
    const Outcome outcome = run({"folders", "add", "no\nsuch\x1b[2Jfolder"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr(R"(no\nsuch\x1b[2Jfolder)"));
    EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1);
}

TEST_F(Output, AlignsWideNames)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/abcd.pdf", "");
    home().write("in/\u65E5\u672C.pdf", "");

    const std::string output = run({"preview"}).output;

    EXPECT_THAT(output, HasSubstr("  abcd.pdf  -> "));
    EXPECT_THAT(output, HasSubstr("  \u65E5\u672C.pdf  -> "));
}

TEST_F(Output, GivesWeirdNamesUnchangedAsJSON)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    const std::string name = "a\nb\x1b\"\\\u202E.pdf";
    home().write("in/" + name, "A");

    const QJsonArray actions = json({"preview"}).object()["actions"].toArray();

    ASSERT_EQ(actions.size(), 1);
    EXPECT_EQ(text(actions[0].toObject()["source"]), home().path("in/" + name));
}

TEST_F(Output, HasColourOnATerminalOnlyAndOnlyIfWanted)
{
    EXPECT_THAT(onTerminal({"status"}), HasSubstr("\x1b["));
    EXPECT_THAT(onTerminal({"status"}, {{"NO_COLOR", "1"}}), Not(HasSubstr("\x1b[")));
    EXPECT_THAT(onTerminal({"status"}, {{"NO_COLOR", ""}}), HasSubstr("\x1b["));
    EXPECT_THAT(onTerminal({"status"}, {{"TERM", "dumb"}}), Not(HasSubstr("\x1b[")));
    EXPECT_THAT(onTerminal({"status", "--json"}), Not(HasSubstr("\x1b[")));
    EXPECT_THAT(run({"status"}).output, Not(HasSubstr("\x1b[")));
}

TEST_F(Output, IsTheSameInEveryLocale)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/caf\u00E9 \u65E5\u672C.pdf", "");
    const std::string expected = run({"preview"}).output;
    for (const char* locale : {"C", "C.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8"}) {
        ProgramStart how = startWithErrorFile({"preview"});
        how.environment["LC_ALL"] = locale;
        how.outputFile = home().path("out");
        home().write("out", "");
        ASSERT_EQ(runWith(how).status, 0);

        EXPECT_EQ(home().read("out"), expected) << locale;
    }
}

}  // namespace
}  // namespace tidemark
