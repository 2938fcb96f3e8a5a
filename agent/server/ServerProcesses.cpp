#include "server/ServerProcesses.h"

#include <utility>

#include <windows.h>

#include <tlhelp32.h>

#include "platform/Base.h"
#include "platform/Deadline.h"
#include "platform/Folders.h"
#include "server/ServerInstance.h"
#include "server/ServerLaunch.h"

namespace Kestrany::Agent {

namespace {

/// Held by the process that starts a server of the identity, so that the ready event belongs to the process it starts.
class StartLock
{
public:
    StartLock(const std::string& identity, const Deadline& deadline)
        : mutex_(CreateMutexW(nullptr, FALSE, StartMutexName(identity).c_str()))
    {
        const DWORD result = mutex_ ? WaitForSingleObject(mutex_.get(), deadline.Left()) : WAIT_FAILED;
        held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    }
    ~StartLock()
    {
        if (held_)
            ReleaseMutex(mutex_.get());
    }
    StartLock(const StartLock&) = delete;
    StartLock& operator=(const StartLock&) = delete;

    bool IsHeld() const { return held_; }

private:
    Handle mutex_;
    bool held_ = false;
};

struct ServerProcess
{
    DWORD id = 0;
    Handle process; ///< Null if there is none.
};

Handle OpenForWait(DWORD processId)
{
    return Handle(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
}

ServerProcess FindRunning(const std::string& identity)
{
    const auto id = FindServer(identity);
    if (!id)
        return {};
    return {*id, OpenForWait(*id)};
}

/// Starts the program without a window. It inherits nothing but the environment.
ServerProcess Launch(const std::wstring& executable, const std::string& identity,
                     const std::vector<std::wstring>& arguments)
{
    std::vector<std::wstring> texts{executable, L"--identity", std::wstring(identity.begin(), identity.end())};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::wstring commandLine = JoinCommandLine(texts);

    std::wstring environment = ServerEnvironment();
    // Not this process's current folder: nobody could remove it while the server runs.
    const std::wstring folder = FullPath(executable.substr(0, executable.find_last_of(L"\\/") + 1));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr, FALSE,
                        CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT, environment.data(),
                        folder.empty() ? nullptr : folder.c_str(), &startup, &started))
        return {};
    const Handle thread(started.hThread);
    return {started.dwProcessId, Handle(started.hProcess)};
}

enum class StartResult
{
    Ready,
    Ended,
    TimedOut
};

StartResult WaitUntilReady(HANDLE process, HANDLE ready, const Deadline& deadline)
{
    const HANDLE objects[] = {process, ready};
    switch (WaitForMultipleObjects(2, objects, FALSE, deadline.Left()))
    {
    case WAIT_OBJECT_0:
        return StartResult::Ended;
    case WAIT_OBJECT_0 + 1:
        return StartResult::Ready;
    default:
        return StartResult::TimedOut;
    }
}

DWORD ExitCode(HANDLE process)
{
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    return code;
}

bool SameName(const wchar_t* left, const std::wstring& right)
{
    return CompareStringOrdinal(left, -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
}

/// Only processes of the server application have the event: other programs of the same name are left alone.
bool CanBeAskedToQuit(DWORD processId)
{
    return Handle(OpenEventW(EVENT_MODIFY_STATE, FALSE, QuitEventName(processId).c_str())) != nullptr;
}

std::vector<DWORD> FindServersByFile(const std::wstring& executableName)
{
    std::vector<DWORD> found;
    const Handle snapshot = OwnFile(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = snapshot && Process32FirstW(snapshot.get(), &entry); more;
         more = Process32NextW(snapshot.get(), &entry))
    {
        if (SameName(entry.szExeFile, executableName) && CanBeAskedToQuit(entry.th32ProcessID))
            found.push_back(entry.th32ProcessID);
    }
    return found;
}

} // namespace

ServerProcesses::ServerProcesses(LogSink log) : log_(std::move(log)) {}

bool ServerProcesses::Start(const std::wstring& executable, const std::string& identity,
                            const std::vector<std::wstring>& arguments, std::int64_t limit,
                            std::int64_t& processId) const
{
    const Deadline deadline(limit);
    const StartLock lock(identity, deadline);
    const Handle ready(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName(identity).c_str()));
    if (!lock.IsHeld() || !ready)
    {
        log_(TALIXLog::Error, "Failed to start server " + identity + ": another start of it did not come to an end");
        return false;
    }

    ServerProcess server;
    auto result = StartResult::Ended;
    for (bool again = true; again && result == StartResult::Ended;)
    {
        server = FindRunning(identity);
        const bool found = server.process != nullptr;
        if (!found)
        {
            // It may be left set by a server that crashed, if another process holds it open.
            ResetEvent(ready.get());
            server = Launch(executable, identity, arguments);
        }
        if (!server.process)
        {
            const DWORD error = GetLastError();
            log_(TALIXLog::Error,
                 "Failed to start server " + identity + " from " + Narrow(executable) + ": " + SystemMessage(error));
            return false;
        }
        result = WaitUntilReady(server.process.get(), ready.get(), deadline);
        // A server that was found was about to end. A started one that met another of its identity ended: look again,
        // the other one has not published its process ID yet, or is about to end.
        again = (found || ExitCode(server.process.get()) == ServerAlreadyRunning) && deadline.Left() > 0;
    }

    const std::string name = "Server " + identity + " (process " + std::to_string(server.id) + ")";
    if (result == StartResult::Ended)
    {
        log_(TALIXLog::Error, name + " ended at start with exit code " +
                                  std::to_string(ExitCode(server.process.get())) + "; it was started from " +
                                  Narrow(executable));
        return false;
    }
    processId = server.id;
    if (result == StartResult::TimedOut)
    {
        log_(TALIXLog::Error, name + " was not ready within " + std::to_string(limit) + " ms");
        return false;
    }
    log_(TALIXLog::Info, name + " is ready");
    return true;
}

bool ServerProcesses::Quit(const std::string& identity, std::int64_t limit) const
{
    const auto processId = FindServer(identity);
    return !processId || QuitProcesses({*processId}, limit);
}

bool ServerProcesses::QuitAll(const std::wstring& executableName, std::int64_t limit) const
{
    return QuitProcesses(FindServersByFile(executableName), limit);
}

bool ServerProcesses::QuitProcesses(const std::vector<unsigned long>& processIds, std::int64_t limit) const
{
    const Deadline deadline(limit);
    std::vector<std::pair<DWORD, Handle>> processes;
    bool allReached = true;
    // All are asked before the first wait: they share the limit.
    for (const DWORD id : processIds)
    {
        Handle process = OpenForWait(id);
        if (!process)
        {
            // A process that has ended is a success; one that denies access is not.
            allReached = allReached && GetLastError() == ERROR_INVALID_PARAMETER;
            continue;
        }
        if (const Handle quit{OpenEventW(EVENT_MODIFY_STATE, FALSE, QuitEventName(id).c_str())})
            SetEvent(quit.get());
        processes.emplace_back(id, std::move(process));
    }

    bool allQuit = allReached;
    for (const auto& [id, process] : processes)
    {
        if (WaitForSingleObject(process.get(), deadline.Left()) == WAIT_OBJECT_0)
        {
            log_(TALIXLog::Info, "Server process " + std::to_string(id) + " quit");
            continue;
        }
        allQuit = false;
        if (limit <= 0)
            continue;
        TerminateProcess(process.get(), ServerFailed);
        log_(TALIXLog::Warning, "Server process " + std::to_string(id) + " did not quit within " +
                                    std::to_string(limit) + " ms and was terminated");
    }
    return allQuit;
}

} // namespace Kestrany::Agent
