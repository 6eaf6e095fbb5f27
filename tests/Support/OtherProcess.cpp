#include "OtherProcess.h"

#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

namespace tidemark {

void otherProcess(const std::string& script)
{
    std::string shell = "sh";
    std::string stopAtErrors = "-ec";
    std::string text = script;
    char* const arguments[] = {shell.data(), stopAtErrors.data(), text.data(), nullptr};
    pid_t child = -1;
    ASSERT_EQ(::posix_spawn(&child, "/bin/sh", nullptr, nullptr, arguments, environ), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child) << std::strerror(errno);
    ASSERT_EQ(status, 0) << "failed: " << script;
}

}  // namespace tidemark
