#pragma once

#include "ProgramProcess.h"
#include "Settings.h"
#include "TemporaryFolder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tidemark {

/// What a call of tidemarkctl came to.
struct Outcome {
    int status = -1;
    std::string output;
    std::string error;
};

/// Runs the real tidemarkctl in a home folder of its own.
class CommandLineFixture : public testing::Test {
protected:
    CommandLineFixture();

    Outcome run(const std::vector<std::string>& arguments) const;

    /// The same in this folder.
    Outcome runIn(const std::string& folder, const std::vector<std::string>& arguments) const;

    /// Runs it with --json behind, expects success and returns the document.
    QJsonDocument json(std::vector<std::string> arguments) const;

    /// How `run` starts it, for tests that want something else.
    ProgramStart start(std::vector<std::string> arguments) const;

    const TemporaryFolder& home() const { return m_home; }
    std::string supportPath(const std::string& name = "") const;

    /// The paths and contents of all files in the home folder.
    std::vector<std::string> everything() const;

    void writeSettings(const Settings& settings) const;

    /// Settings with these folders below home, each with `rules` and no others. Files are never too fresh.
    Settings watching(
        const std::vector<std::string>& folders, const std::vector<Rule>& rules) const;

    /// Files "*.pdf" into "Filed" below home.
    Rule filingPapers() const;

private:
    TemporaryFolder m_home;
    TemporaryFolder m_streams;
};

QJsonDocument parsed(const std::string& text);
std::string text(const QJsonValue& value);

}  // namespace tidemark
