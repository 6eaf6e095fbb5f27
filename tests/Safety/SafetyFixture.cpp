#include "SafetyFixture.h"

#include "PrivateMounts.h"
#include "TemporaryFolder.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace tidemark {

bool wantsLongTests()
{
    const char* value = std::getenv("TIDEMARK_LONG_TESTS");
    return value != nullptr && std::string_view{value} == "1";
}

void printCounts(const std::string& counts)
{
    std::cout << "counted: " << counts << std::endl;
}

void SafetyTest::inWorld(const std::function<void(World&)>& body)
{
    if (const auto reason = TracedProcess::whyNotPossible())
        GTEST_SKIP() << *reason;
    const TemporaryFolder place;
    place.makeFolder("disk");
    const auto inPlace = [&] {
        World world{place.path(), GetParam()};
        if (!world.hasExtendedAttributes())
            printCounts("1 tests on disks that keep no extended attributes");
        world.reset();
        body(world);
    };
    if (!GetParam().needsDisk)
        return inPlace();
    testWithPrivateMounts([&] {
        mountMemory(place.path("disk"));
        inPlace();
    });
}

std::string scenarioName(const testing::TestParamInfo<Scenario>& info)
{
    return info.param.name;
}

}  // namespace tidemark
