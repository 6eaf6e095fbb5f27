#pragma once

#include "UpdateServices.h"

#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tidemark {

/// Searches that end when the test says so.
class ManualUpdateFinder final : public UpdateFinder {
public:
    std::unique_ptr<Search> find(const std::string& currentVersion, Found found) override
    {
        ++begun;
        version = currentVersion;
        auto search = std::make_unique<ManualSearch>(*this, begun);
        m_running.emplace_back(begun, std::move(found));
        return search;
    }

    /// How many are under way.
    std::size_t running() const { return m_running.size(); }

    /// Ends the one that has been under way for the longest time.
    void end(std::optional<UpdateInfo> update)
    {
        if (m_running.empty())
            throw std::logic_error{"nobody is looking for an update"};
        const Found found = std::move(m_running.front().second);
        m_running.pop_front();
        found(std::move(update));
    }

    int begun = 0;
    std::string version;  ///< That the last one was to compare with.

private:
    class ManualSearch final : public Search {
    public:
        ManualSearch(ManualUpdateFinder& finder, int number)
            : m_finder(finder)
            , m_number(number)
        {
        }
        ~ManualSearch() override
        {
            std::erase_if(m_finder.m_running,
                [this](const auto& search) { return search.first == m_number; });
        }

    private:
        ManualUpdateFinder& m_finder;
        int m_number;
    };

    std::deque<std::pair<int, Found>> m_running;
};

/// Alerts that the test answers. Showing two at once throws.
class ManualAlerts final : public UpdateAlerts {
public:
    void show(const UpdateAlert& alert, Answered answered) override
    {
        if (up)
            throw std::logic_error{"two alerts at once"};
        up = alert;
        ++shown;
        m_answered = std::move(answered);
    }

    void bringForward() override
    {
        if (!up)
            throw std::logic_error{"there is no alert to bring forward"};
        ++broughtForward;
    }

    void withdraw() override
    {
        up.reset();
        m_answered = {};
    }

    /// Presses the button of this name.
    void answer(const std::string& button)
    {
        for (std::size_t index = 0; up && index < up->buttons.size(); ++index) {
            if (up->buttons.at(index) == button) {
                up.reset();
                return std::exchange(m_answered, {})(index);
            }
        }
        throw std::logic_error{"no alert with the button " + button};
    }

    std::optional<UpdateAlert> up;
    int shown = 0;
    int broughtForward = 0;

private:
    Answered m_answered;
};

/// Installs nothing, and tells what the test says.
class ManualInstaller final : public UpdateInstaller {
public:
    void install(const UpdateInfo& update, Progress progress, Done done) override
    {
        installed.push_back(update);
        tellProgress = std::move(progress);
        m_done = std::move(done);
    }

    void succeed() { std::exchange(m_done, {})(nullptr); }

    template <typename Error>
    void fail(Error error)
    {
        std::exchange(m_done, {})(std::make_exception_ptr(std::move(error)));
    }

    std::vector<UpdateInfo> installed;
    Progress tellProgress;

private:
    Done m_done;
};

/// A countdown that the test lets run out.
class ManualCountdown final : public Countdown {
public:
    void start(Seconds duration, std::function<void()> ring) override
    {
        running = duration;
        m_ring = std::move(ring);
    }

    void cancel() override
    {
        running.reset();
        m_ring = {};
    }

    void runOut()
    {
        running.reset();
        std::exchange(m_ring, {})();
    }

    std::optional<Seconds> running;

private:
    std::function<void()> m_ring;
};

/// All that an update flow needs; what it remembers is in a real file.
struct FakeUpdates {
    explicit FakeUpdates(const FileURL& defaultsFile)
        : defaults(defaultsFile)
    {
    }

    UpdateServices services()
    {
        return {.finder = finder,
            .alerts = alerts,
            .installer = installer,
            .defaults = defaults,
            .countdown = countdown,
            .downloadPage = "tidemark.example/download",
            .quit = [this] { ++quits; }};
    }

    ManualUpdateFinder finder;
    ManualAlerts alerts;
    ManualInstaller installer;
    UserDefaults defaults;
    ManualCountdown countdown;
    int quits = 0;
};

}  // namespace tidemark
