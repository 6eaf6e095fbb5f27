#include "FailureText.h"

#include "SystemCall.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace tidemark {
namespace {

template <typename Action>
std::string reasonOf(Action action)
{
    try {
        action();
    } catch (const std::exception& error) {
        return failureText(error);
    }
    return "nothing was thrown";
}

TEST(FailureText, NamesWhatWasTriedWithThePathAndTheReason)
{
    EXPECT_EQ(reasonOf([] { fail("cannot write", FileURL{"/a/b"}, ENOSPC); }),
        "cannot write /a/b: No space left on device");
    EXPECT_EQ(reasonOf([] { fail("cannot move", FileURL{"/a"}, FileURL{"/b"}, EACCES); }),
        "cannot move /a to /b: Permission denied");
    EXPECT_EQ(reasonOf([] { fail("no home folder", FileURL{}, ENOENT); }),
        "no home folder: No such file or directory");
}

TEST(FailureText, TakesOtherReasonsAsTheyAre)
{
    EXPECT_EQ(reasonOf([] { throw std::runtime_error{"/s.json: folders[2].path: expected"}; }),
        "/s.json: folders[2].path: expected");
    EXPECT_EQ(reasonOf([] { throw std::bad_alloc{}; }), "out of memory");
}

}  // namespace
}  // namespace tidemark
