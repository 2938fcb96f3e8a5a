#ifndef AGENT_TESTS_SERVERTEST_H
#define AGENT_TESTS_SERVERTEST_H

#include <gtest/gtest.h>

#include <string>

#include "Environment.h"
#include "platform/Base.h"
#include "server/ServerProcesses.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

/// Has its own server process.
class ServerTest : public testing::Test
{
protected:
    static constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

    void SetUp() override
    {
        std::int64_t started = 0;
        // A server that a failed test leaves behind ends by itself.
        ASSERT_TRUE(processes.Start(ServerFile(), identity, {L"--quit-after", L"3600"}, Limit, started)) << lastMessage;
        processId = static_cast<DWORD>(started);
        process.reset(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_INFORMATION, FALSE, processId));
        ASSERT_TRUE(process);
    }
    ~ServerTest() override
    {
        // A frozen server would not quit.
        TerminateProcess(process.get(), 9);
        WaitForSingleObject(process.get(), static_cast<DWORD>(Limit));
    }

    bool HasEnded(std::int64_t limit) const
    {
        return WaitForSingleObject(process.get(), static_cast<DWORD>(limit)) == WAIT_OBJECT_0;
    }
    DWORD ExitCode() const
    {
        DWORD code = MAXDWORD;
        GetExitCodeProcess(process.get(), &code);
        return code;
    }

    const std::string identity = OwnIdentity("Server");
    std::string lastMessage;
    const LogSink log = [this](TALIXLog::LogLevel, const std::string& message) { lastMessage = message; };
    ServerProcesses processes{log};
    DWORD processId = 0;
    Handle process;
};

} // namespace Kestrany::Agent

#endif
