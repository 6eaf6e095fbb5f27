#include "CommandFailure.h"
#include "ModelFixture.h"
#include "RemoteControl.h"
#include "RemoteOperations.h"
#include "SupportLock.h"

#include <QScopeGuard>

#include <future>

namespace tidemark {

/// A model that serves its support folder, and somebody who starts the application again.
class RemoteControlTest : public ModelTest {
protected:
    RemoteControlTest()
    {
        m_lock.emplace(SupportLock::acquire(m_home.url("support")));
        start();
        m_control.emplace(model(), m_home.url("support"));
    }

    void startAgain(const std::string& activationToken)
    {
        MainQueue queue;
        bool isDone = false;
        auto result = std::async(std::launch::async, [&] {
            const auto done = qScopeGuard([&] { queue.post([&] { isDone = true; }); });
            auto client = RemoteClient::connect(m_home.url("support"));
            RemoteOperations{std::move(client.value())}.bringForward(activationToken);
        });
        EXPECT_TRUE(runUntil([&] { return isDone; }));
        result.get();
    }

    std::optional<SupportLock> m_lock;
    std::optional<RemoteControl> m_control;
};

TEST_F(RemoteControlTest, ASecondStartBringsTheWindowsForwardWithItsActivationToken)
{
    std::vector<std::string> tokens;
    m_control->onBringForward([&](const std::string& token) { tokens.push_back(token); });
    startAgain("sway-12 \"x\"");
    startAgain("");
    EXPECT_THAT(tokens, testing::ElementsAre("sway-12 \"x\"", ""));
}

TEST_F(RemoteControlTest, WhereThereAreNoWindowsASecondStartIsTold)
{
    try {
        startAgain("token");
        FAIL();
    } catch (const CommandFailure& failure) {
        EXPECT_STREQ(failure.what(),
            "Tidemark is running already as \"tidemarkctl watch\", which has no windows");
    }
}

}  // namespace tidemark
