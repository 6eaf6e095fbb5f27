#include "SafetyFixture.h"

#include <gmock/gmock.h>

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <map>
#include <tuple>

namespace tidemark {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

using FailingAnywhere = SafetyTest;

/// What such a call can come to on some file system, besides success and what comes of the name it takes.
std::vector<int> errorsOf(TracedCall::Kind kind)
{
    using Kind = TracedCall::Kind;
    switch (kind) {
    case Kind::look:
        return {EACCES, EIO, ESTALE, EINTR};
    case Kind::open:
        return {EACCES, EIO, EMFILE, ESTALE, EINTR};
    case Kind::create:
        return {ENOSPC, EACCES, EROFS, EIO, EDQUOT, EMFILE, ESTALE, EINTR};
    case Kind::read:
        return {EIO, ESTALE, EINTR};
    case Kind::write:
        return {ENOSPC, EIO, EDQUOT, ESTALE, EINTR};
    case Kind::clone:
        return {EXDEV, ENOSPC, EIO, ESTALE, EINTR};
    case Kind::truncate:
        return {ENOSPC, EIO, EDQUOT, ESTALE, EINTR};
    case Kind::attribute:
        return {EPERM, EACCES, EROFS, ENOSPC, EDQUOT, EIO, ESTALE, EINTR};
    case Kind::sync:
        return {EIO, ENOSPC, EDQUOT, ESTALE, EINTR};
    case Kind::makeFolder:
        return {ENOSPC, EACCES, EROFS, EIO, EDQUOT, EMLINK, ESTALE, EINTR};
    case Kind::link:
    case Kind::symlink:
        return {EMLINK, EPERM, EACCES, EXDEV, ENOSPC, EROFS, EIO, EDQUOT, ESTALE, EINTR};
    case Kind::rename:
        return {EXDEV, EACCES, EPERM, EROFS, ENOSPC, EIO, EDQUOT, EMLINK, EINVAL, ESTALE, EINTR};
    case Kind::remove:
    case Kind::removeFolder:
        return {EACCES, EPERM, EROFS, EIO, EBUSY, ESTALE, EINTR};
    case Kind::close:
        return {EIO, ENOSPC, EDQUOT, EINTR};
    }
    return {};
}

/// Whether it takes a name that may be longer than a file system allows: a new one, or one that is not there.
bool mayTakeTooLongName(const TracedCall& call)
{
    using Kind = TracedCall::Kind;
    switch (call.kind) {
    case Kind::look:
    case Kind::open:
        return call.result == -ENOENT;
    case Kind::create:
        return (call.flags & O_TMPFILE) != O_TMPFILE;
    case Kind::makeFolder:
    case Kind::link:
    case Kind::symlink:
    case Kind::rename:
        return true;
    default:
        return false;
    }
}

std::vector<int> errorsOf(const TracedCall& call)
{
    std::vector<int> errors = errorsOf(call.kind);
    if (mayTakeTooLongName(call))
        errors.push_back(ENAMETOOLONG);
    return errors;
}

/// One disturbance of one run.
struct Fault {
    std::size_t call = 0;
    CallVerdict verdict;
    std::size_t times = 1;  ///< That call and so many in all fail, one after the other.

    CallVerdict of(std::size_t index) const
    {
        return index >= call && index < call + times ? verdict : CallVerdict{};
    }

    std::string text(const TracedCall& failing) const
    {
        std::string text = "call " + std::to_string(call) + ' ' + failing.text();
        if (verdict.kind == CallVerdict::Kind::shorten)
            return text + " is cut short";
        return text + " fails with " + std::strerror(verdict.error)
            + (times > 1 ? ", and so does the next" : "");
    }
};

/// Whether a file would go into the Trash at the root of this machine's own file system, which is no test's
/// business: the one at the top of a file system is tried on a disk that a scenario has for itself.
bool leadsOutside(const TracedCall& call, int error)
{
    return error == EXDEV && call.kind == TracedCall::Kind::rename
        && call.otherPath.find("/home/.local/share/Trash/files/") != std::string::npos
        && call.path.find("/disk/") == std::string::npos;
}

std::vector<Fault> faultsOf(std::size_t index, const TracedCall& call)
{
    std::vector<Fault> faults;
    if (call.kind == TracedCall::Kind::write)
        faults.push_back({index, {CallVerdict::Kind::shorten}});
    for (const std::size_t times : {std::size_t{1}, std::size_t{2}}) {
        for (const int error : errorsOf(call)) {
            // The call after it may look up a name that is there, and so is not too long.
            const bool isNextSpared = times > 1 && error == ENAMETOOLONG;
            if (!isNextSpared && !leadsOutside(call, error))
                faults.push_back({index, {CallVerdict::Kind::fail, error}, times});
        }
    }
    return faults;
}

/// Whether it is one that is never tried again or got around. What cannot be removed often cannot be taken back
/// either.
bool isPlain(const Fault& fault, const TracedCall& call)
{
    return fault.verdict.kind == CallVerdict::Kind::shorten
        || (fault.verdict.error == EIO
            && (fault.times == 1 || call.kind == TracedCall::Kind::remove));
}

/// In the long form all. In the short form so many: a plain one of every kind of call, and others spread
/// over calls and errors; not the same ones for every scenario.
std::vector<Fault> chosen(const std::vector<Fault>& all, const std::vector<TracedCall>& calls,
    const std::string& scenario)
{
    constexpr std::size_t inShortForm = 24;
    if (wantsLongTests() || all.size() <= inShortForm)
        return all;
    std::map<std::tuple<std::string, CallVerdict::Kind, std::size_t>, std::vector<Fault>> plain;
    for (const Fault& fault : all) {
        const TracedCall& call = calls[fault.call];
        if (isPlain(fault, call))
            plain[{call.name, fault.verdict.kind, fault.times}].push_back(fault);
    }
    const std::size_t seed = std::hash<std::string>{}(scenario);
    std::vector<Fault> some;
    some.reserve(inShortForm);
    for (const auto& [call, faults] : plain)
        some.push_back(faults[seed % faults.size()]);
    const std::size_t start = seed % all.size();
    for (std::size_t number = some.size(); number < inShortForm; ++number)
        some.push_back(all[(start + number * all.size() / inShortForm) % all.size()]);
    return some;
}

TracedOutcome runWith(const Fault& fault, const World& world)
{
    std::size_t seen = 0;
    return world.run([&](const TracedCall&) { return fault.of(seen++); });
}

/// The calls of a run without a fault, but for those that the scenario refuses anyway.
std::vector<TracedCall> offered(const World& world)
{
    TracedOutcome outcome = world.run([](const TracedCall&) { return CallVerdict{}; });
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    std::erase_if(outcome.calls, [&](const TracedCall& call) {
        return world.scenario().refuses != nullptr && world.scenario().refuses(call) != 0;
    });
    return std::move(outcome.calls);
}

/// Either the work was done all the same, or one line tells which file or folder was in the way.
void expectDoneOrTold(const TracedOutcome& outcome, const World& world)
{
    ASSERT_FALSE(outcome.didHang);
    if (outcome.status == 0) {
        EXPECT_TRUE(world.isDone()) << "says nothing of what was not done:\n" << outcome.output;
        return;
    }
    EXPECT_EQ(outcome.status, 1) << outcome.error;
    EXPECT_TRUE(outcome.error.starts_with("tidemarkctl: ")) << outcome.error;
    EXPECT_THAT(outcome.error, AnyOf(HasSubstr(world.place()), HasSubstr("~/")));
}

TEST_P(FailingAnywhere, LeavesEveryFileAndUndoBringsAllBack)
{
    inWorld([](World& world) {
        const std::vector<TracedCall> calls = offered(world);
        std::vector<Fault> all;
        for (std::size_t index = 0; index < calls.size(); ++index) {
            for (const Fault& fault : faultsOf(index, calls[index]))
                all.push_back(fault);
        }
        std::size_t withdrawn = 0;
        const std::vector<Fault> faults = chosen(all, calls, world.scenario().name);
        for (const Fault& fault : faults) {
            SCOPED_TRACE(fault.text(calls[fault.call]));
            world.reset();
            expectDoneOrTold(runWith(fault, world), world);
            const bool sweepsFirst = fault.call % 2 == 0;
            const Leftovers leftovers = world.check();
            withdrawn += leftovers.withdrawn.size();
            world.bringBack(leftovers, sweepsFirst);
        }
        std::string counts = std::to_string(faults.size()) + " faults";
        if (withdrawn > 0)
            counts += ", " + std::to_string(withdrawn)
                + " faults that left a file in the Trash whose place the journal could not be told";
        printCounts(counts);
    });
}

/// Whether its failure means that something may not have reached the disk: the flush of a file or folder, and
/// the end of writing one of the product's own files (a network file system tells only there that it is full).
bool bringsToTheDisk(const TracedCall& call)
{
    const bool isOwnFile = call.path.find("/Tidemark/.") != std::string::npos;
    return call.kind == TracedCall::Kind::sync
        || (call.kind == TracedCall::Kind::close && isOwnFile && call.path.ends_with(".tmp"));
}

/// A Trash that cannot be made beside the file gives way to the one at home.
bool isGotAround(const TracedCall& call, const World& world)
{
    return world.scenario().name == "TrashOnDisk" && call.path.starts_with(world.place() + "/disk")
        && !call.path.ends_with(".trashinfo");
}

TEST_P(FailingAnywhere, TakesNothingForDoneThatMayNotHaveReachedTheDisk)
{
    inWorld([](World& world) {
        const std::vector<TracedCall> calls = offered(world);
        std::map<std::string, std::size_t> kinds;
        std::size_t tried = 0;
        for (std::size_t index = 0; index < calls.size(); ++index) {
            if (!bringsToTheDisk(calls[index]) || isGotAround(calls[index], world))
                continue;
            const std::string folder = calls[index].path.substr(0, calls[index].path.rfind('/'));
            if (!wantsLongTests() && kinds[calls[index].name + folder]++ > 0)
                continue;
            SCOPED_TRACE(calls[index].text());
            world.reset();
            const TracedOutcome outcome = runWith({index, {CallVerdict::Kind::fail, EIO}}, world);
            EXPECT_EQ(outcome.status, 1) << "says nothing:\n" << outcome.output;
            world.bringBack(world.check(), false);
            ++tried;
        }
        EXPECT_GT(tried, 1U);
        printCounts(std::to_string(tried) + " flushes that failed");
    });
}

INSTANTIATE_TEST_SUITE_P(Safety, FailingAnywhere, testing::ValuesIn(everyScenario()), scenarioName);

}  // namespace
}  // namespace tidemark
