#include "CommandLineFixture.h"

#include "JSONCoders.h"
#include "ProgramUnderTest.h"

#include <algorithm>
#include <filesystem>

namespace tidemark {

namespace fs = std::filesystem;

CommandLineFixture::CommandLineFixture()
{
    m_streams.write("out", "");
    m_streams.write("err", "");
}

ProgramStart CommandLineFixture::start(std::vector<std::string> arguments) const
{
    return {
        .path = programUnderTest(TIDEMARKCTL),
        .arguments = std::move(arguments),
        .environment = {{"HOME", m_home.path()}, {"XDG_DATA_HOME", m_home.path("data")},
            {"XDG_CONFIG_HOME", m_home.path("config")}, {"XDG_CACHE_HOME", m_home.path("cache")},
            {"XDG_RUNTIME_DIR", m_home.path("runtime")}, {"TMPDIR", m_streams.path()},
            {"TZ", "UTC"}, {"TERM", "xterm"}},
        .workingFolder = m_home.path(),
        .outputFile = m_streams.path("out"),
        .outputDescriptor = -1,
        .errorFile = m_streams.path("err"),
    };
}

Outcome CommandLineFixture::run(const std::vector<std::string>& arguments) const
{
    return runIn(m_home.path(), arguments);
}

Outcome CommandLineFixture::runIn(
    const std::string& folder, const std::vector<std::string>& arguments) const
{
    m_streams.write("out", "");
    m_streams.write("err", "");
    ProgramStart how = start(arguments);
    how.workingFolder = folder;
    ProgramProcess process{how};
    const int status = process.wait();
    return {status, m_streams.read("out"), m_streams.read("err")};
}

QJsonDocument CommandLineFixture::json(std::vector<std::string> arguments) const
{
    arguments.emplace_back("--json");
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    EXPECT_TRUE(outcome.output.ends_with("}\n") || outcome.output.ends_with("]\n"));
    return parsed(outcome.output);
}

std::string CommandLineFixture::supportPath(const std::string& name) const
{
    return m_home.path("data/Tidemark" + (name.empty() ? "" : '/' + name));
}

std::vector<std::string> CommandLineFixture::everything() const
{
    std::vector<std::string> result;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{m_home.path()}) {
        const std::string path = fs::relative(entry.path(), m_home.path()).string();
        const bool isFile = entry.is_regular_file() && !entry.is_symlink();
        result.push_back(isFile ? path + ": " + m_home.read(path) : path);
    }
    std::ranges::sort(result);
    return result;
}

void CommandLineFixture::writeSettings(const Settings& settings) const
{
    m_home.write("data/Tidemark/settings.json", JSONCoders::encode(settings));
}

Settings CommandLineFixture::watching(
    const std::vector<std::string>& folders, const std::vector<Rule>& rules) const
{
    Settings settings{.gracePeriod = Seconds{-3600}};
    for (const std::string& folder : folders) {
        m_home.makeFolder(folder);
        settings.folders.push_back(
            {.path = m_home.path(folder), .rules = rules, .sortsMarkdown = false});
    }
    return settings;
}

Rule CommandLineFixture::filingPapers() const
{
    return {.name = "File papers",
        .match = {.fileTypes = {"pdf"}},
        .action = RuleAction::fixed(SweepAction::move(FileURL::directory(m_home.path("Filed"))))};
}

QJsonDocument parsed(const std::string& text)
{
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError)
        << error.errorString().toStdString() << " in " << text;
    return document;
}

std::string text(const QJsonValue& value)
{
    EXPECT_TRUE(value.isString());
    return value.toString().toStdString();
}

}  // namespace tidemark
