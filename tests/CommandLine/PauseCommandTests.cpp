#include "CommandLineFixture.h"

#include <gmock/gmock.h>

namespace tidemark {
namespace {

class PauseCommand : public CommandLineFixture { };

TEST_F(PauseCommand, StopsSweepingUntilResume)
{
    EXPECT_EQ(run({"pause"}).output, "Sweeping is paused. Resume with: tidemarkctl resume\n");
    EXPECT_EQ(text(json({"status"}).object()["statusText"]), "Paused");
    EXPECT_EQ(
        run({"pause"}).output, "Sweeping was paused already. Resume with: tidemarkctl resume\n");

    EXPECT_EQ(run({"resume"}).output, "Sweeping goes on.\n");
    EXPECT_FALSE(json({"status"}).object()["isPaused"].toBool(true));
    EXPECT_EQ(run({"resume"}).output, "Sweeping was not paused.\n");
}

TEST_F(PauseCommand, PrintsTheNewStatusAsJSON)
{
    EXPECT_TRUE(json({"pause"}).object()["isPaused"].toBool());
    EXPECT_FALSE(json({"resume"}).object()["isPaused"].toBool(true));
}

TEST_F(PauseCommand, KeepsTheOtherSettings)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.markdownSubfolder = "Zettel";
    settings.hasOnboarded = true;
    writeSettings(settings);
    const QJsonObject before = parsed(home().read("data/Tidemark/settings.json")).object();

    run({"pause"});

    QJsonObject after = parsed(home().read("data/Tidemark/settings.json")).object();
    EXPECT_TRUE(after["isPaused"].toBool());
    after[u"isPaused"_qs] = false;
    EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace tidemark
