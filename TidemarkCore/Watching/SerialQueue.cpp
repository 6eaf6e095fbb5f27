#include "SerialQueue.h"

#include <linux/ioprio.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <deque>
#include <future>
#include <map>

namespace tidemark {

namespace {

constexpr int lowNiceness = 10;
constexpr int lowestIOLevel = IOPRIO_NR_LEVELS - 1;
constexpr std::size_t longestThreadName = 15;

void nameThisThread(const std::string& label)
{
    const std::string name = label.substr(label.rfind('.') + 1);
    ::pthread_setname_np(::pthread_self(), name.substr(0, longestThreadName).c_str());
}

/// Both are a courtesy to other work: where they are refused, the queue does without.
void lowerPriorityOfThisThread()
{
    const auto thread = static_cast<id_t>(::gettid());
    ::setpriority(PRIO_PROCESS, thread, lowNiceness);
    constexpr int ioprioWhoProcess = 1;
    ::syscall(SYS_ioprio_set, ioprioWhoProcess, thread,
        IOPRIO_PRIO_VALUE(IOPRIO_CLASS_BE, lowestIOLevel));
}

}  // namespace

struct SerialQueue::State {
    using Delayed = std::map<DelayedWork::Key, std::shared_ptr<Work>>;

    explicit State(TimeSource& clock)
        : time(clock)
    {
    }

    /// Everything below is guarded by `sleeper.mutex`.
    Sleeper sleeper;
    TimeSource& time;
    std::deque<std::shared_ptr<Work>> ready;
    Delayed delayed;
    std::uint64_t delayedCount = 0;
    bool isEnding = false;

    void moveDueWork()
    {
        if (delayed.empty())
            return;
        const TimeSource::Instant now = time.now();
        while (!delayed.empty() && delayed.begin()->first.first <= now)
            ready.push_back(std::move(delayed.extract(delayed.begin()).mapped()));
    }

    void runNext(std::unique_lock<std::mutex>& lock)
    {
        // Cancelled work is empty.
        Work work = std::exchange(*ready.front(), nullptr);
        ready.pop_front();
        lock.unlock();
        if (work)
            work();
        // What the work holds may call the queue when it goes.
        work = nullptr;
        lock.lock();
    }

    void sleepUntilWork(std::unique_lock<std::mutex>& lock)
    {
        if (delayed.empty())
            sleeper.wake.wait(lock);
        else
            time.sleep(sleeper, lock, delayed.begin()->first.first);
    }

    void run()
    {
        std::unique_lock lock{sleeper.mutex};
        while (!isEnding) {
            moveDueWork();
            if (ready.empty())
                sleepUntilWork(lock);
            else
                runNext(lock);
        }
    }

    void end()
    {
        std::deque<std::shared_ptr<Work>> droppedReady;
        Delayed droppedDelayed;
        const std::lock_guard lock{sleeper.mutex};
        isEnding = true;
        droppedReady.swap(ready);
        droppedDelayed.swap(delayed);
        sleeper.wake.notify_all();
    }
};

void SerialQueue::DelayedWork::cancel()
{
    const std::shared_ptr<State> state = m_state.lock();
    if (!state)
        return;
    // Released after the lock: what the work holds may call the queue when it goes.
    Work cancelled;
    const std::lock_guard lock{state->sleeper.mutex};
    state->delayed.erase(m_key);
    if (const std::shared_ptr<Work> work = m_work.lock())
        cancelled = std::exchange(*work, nullptr);
}

SerialQueue::SerialQueue(std::string label, TimeSource& time, Priority priority)
    : m_label(std::move(label))
    , m_time(time)
    , m_state(std::make_shared<State>(time))
    , m_thread([state = m_state, threadLabel = m_label, priority] {
        nameThisThread(threadLabel);
        if (priority == Priority::low)
            lowerPriorityOfThisThread();
        state->run();
    })
{
    m_time.attach(m_state->sleeper);
}

SerialQueue::~SerialQueue()
{
    m_state->end();
    if (isCurrent())
        m_thread.detach();
    else
        m_thread.join();
    m_time.detach(m_state->sleeper);
}

void SerialQueue::async(Work work)
{
    const std::lock_guard lock{m_state->sleeper.mutex};
    // What is due already comes first.
    m_state->moveDueWork();
    m_state->ready.push_back(std::make_shared<Work>(std::move(work)));
    m_state->sleeper.wake.notify_one();
}

SerialQueue::DelayedWork SerialQueue::asyncAfter(Seconds delay, Work work)
{
    const auto ticks = std::chrono::ceil<TimeSource::Instant::duration>(delay);
    auto item = std::make_shared<Work>(std::move(work));
    const std::lock_guard lock{m_state->sleeper.mutex};
    DelayedWork handle;
    handle.m_state = m_state;
    handle.m_key = {m_time.now() + ticks, m_state->delayedCount++};
    handle.m_work = item;
    m_state->delayed.emplace(handle.m_key, std::move(item));
    m_state->sleeper.wake.notify_one();
    return handle;
}

void SerialQueue::barrier()
{
    if (isCurrent())
        return;
    const auto reached = std::make_shared<std::promise<void>>();
    std::future<void> isReached = reached->get_future();
    async([reached] { reached->set_value(); });
    isReached.wait();
}

bool SerialQueue::isCurrent() const
{
    return std::this_thread::get_id() == m_thread.get_id();
}

}  // namespace tidemark
