#include "plugin/ServerManager.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/Base.h"
#include "plugin/NoThrow.h"
#include "plugin/Texts.h"
#include "server/ServerInstance.h"

namespace Kestrany::Agent {

namespace {

constexpr char DefaultServerIdentity[] = "Kestrany.TALIX.DefaultServer-v2";

/// Copies a list of texts; nullopt if one of them is null or not UTF-8.
std::optional<std::vector<std::string>> TakeArguments(const char* const* arguments, int count)
{
    if (count == 0)
        return std::vector<std::string>();
    if (count < 0 || arguments == nullptr)
        return std::nullopt;
    std::vector<std::string> taken(static_cast<std::size_t>(count));
    for (std::size_t index = 0; index < taken.size(); ++index)
    {
        if (arguments[index] == nullptr || TakeNarrow(arguments[index], taken[index]) != IdSuccess)
            return std::nullopt;
    }
    return taken;
}

std::vector<std::wstring> WidenAll(const std::vector<std::string>& texts)
{
    std::vector<std::wstring> wide;
    wide.reserve(texts.size());
    for (const std::string& text : texts)
        wide.push_back(Widen(text));
    return wide;
}

std::wstring FileName(const std::wstring& path)
{
    return path.substr(path.find_last_of(L"\\/") + 1);
}

} // namespace

ServerManager::ServerManager(LogSink log)
    : log_(log), processes_(std::move(log)), processIdentity_(DefaultIdentity), serverIdentity_(DefaultServerIdentity)
{
}

std::string ServerManager::ProcessIdentity() const
{
    const std::lock_guard lock(mutex_);
    return processIdentity_;
}

std::string ServerManager::ServerIdentity() const
{
    const std::lock_guard lock(mutex_);
    return serverIdentity_;
}

ServerTarget ServerManager::Target() const
{
    const std::lock_guard lock(mutex_);
    return {executable_, processIdentity_, serverIdentity_, WidenAll(arguments_)};
}

void ServerManager::ConfigureServerApp(const wchar_t* location, const wchar_t* executableFile)
{
    NoThrow([&] {
        const std::wstring directory = location == nullptr ? L"" : location;
        const std::wstring file = executableFile == nullptr ? L"" : executableFile;
        log_(TALIXLog::Info, "Server application: " + Narrow(file) + " in " + Narrow(directory));
        const std::lock_guard lock(mutex_);
        const bool isBareName = !file.empty() && FileName(file) == file && !directory.empty();
        executable_ = isBareName ? directory + L"\\" + file : file;
    });
}

void ServerManager::GetSSOServerAppFile(wchar_t* buffer, int capacity)
{
    CopyExecutable(buffer, capacity);
}

void ServerManager::GetSSOServerAppExeFile(wchar_t* buffer, int capacity)
{
    CopyExecutable(buffer, capacity);
}

void ServerManager::SetProcessIdentityName(const char* name)
{
    NoThrow([&] {
        if (name == nullptr || !IsValidIdentity(name))
            return log_(TALIXLog::Warning, "Process identity name refused: 1 to 120 of A-Z a-z 0-9 . _ -");
        const std::lock_guard lock(mutex_);
        processIdentity_ = name;
    });
}

int ServerManager::GetSSOServerName(char* buffer, int capacity)
{
    return NoThrow(0, [&] { return CopyNarrowLength(ServerIdentity(), buffer, capacity); });
}

void ServerManager::SetServerIdentityName(const char* name)
{
    NoThrow([&] {
        if (name == nullptr || !IsValidIdentity(name))
            return log_(TALIXLog::Warning, "Server identity name refused: 1 to 120 of A-Z a-z 0-9 . _ -");
        const std::lock_guard lock(mutex_);
        serverIdentity_ = name;
    });
}

int ServerManager::GetSSOEventServerName(char* buffer, int capacity)
{
    return NoThrow(0, [&] { return CopyNarrowLength(ServerIdentity() + ".Events", buffer, capacity); });
}

bool ServerManager::StartSSOServerProcessWithArguments(const char* const* arguments, int count, std::int64_t timeout,
                                                       std::int64_t& processId)
{
    return NoThrow(false, [&] {
        const std::optional<Arguments> taken = TakeArguments(arguments, count);
        if (!taken)
        {
            log_(TALIXLog::Warning, "Server arguments refused: a null text, or one that is not UTF-8");
            return false;
        }
        return Start(*taken, timeout, processId);
    });
}

bool ServerManager::StartSSOServerProcess(std::int64_t timeout, std::int64_t& processId)
{
    return NoThrow(false, [&] {
        Arguments arguments;
        {
            const std::lock_guard lock(mutex_);
            arguments = arguments_;
        }
        return Start(arguments, timeout, processId);
    });
}

bool ServerManager::GetSSOServerProcessArguments(char** buffers, int count)
{
    return NoThrow(false, [&] {
        const std::lock_guard lock(mutex_);
        if (count < 0 || (buffers == nullptr && count > 0) || static_cast<std::size_t>(count) < arguments_.size())
            return false;
        const auto size = static_cast<std::size_t>(count);
        const bool fits = std::all_of(arguments_.begin(), arguments_.end(),
                                      [](const std::string& argument) { return argument.size() < ArgumentCapacity; });
        if (!fits || std::find(buffers, buffers + size, nullptr) != buffers + size)
            return false;
        for (std::size_t index = 0; index < size; ++index)
        {
            const std::string argument = index < arguments_.size() ? arguments_[index] : std::string();
            std::copy_n(argument.c_str(), argument.size() + 1, buffers[index]);
        }
        return true;
    });
}

void ServerManager::SetSSOServerProcessArguments(const char* const* arguments, int count)
{
    NoThrow([&] {
        std::optional<Arguments> taken = TakeArguments(arguments, count);
        if (!taken)
            return log_(TALIXLog::Warning, "Server arguments refused: a null text, or one that is not UTF-8");
        const std::lock_guard lock(mutex_);
        arguments_ = *std::move(taken);
    });
}

bool ServerManager::IsSSOServerProcessRunning(std::int64_t& processId)
{
    return NoThrow(false, [&] {
        const auto running = FindServer(ProcessIdentity());
        if (running)
            processId = *running;
        return running.has_value();
    });
}

bool ServerManager::IsSSOServerProcessReady()
{
    return NoThrow(false, [&] { return IsServerReady(ProcessIdentity()); });
}

bool ServerManager::QuitSSOServerProcess(std::int64_t timeout)
{
    return NoThrow(false, [&] { return processes_.Quit(ProcessIdentity(), timeout); });
}

bool ServerManager::QuitAllSSOServerProcesses(std::int64_t timeout)
{
    return NoThrow(false, [&] { return processes_.QuitAll(FileName(Executable()), timeout); });
}

void ServerManager::SetSupportBothLocalAndAdmin(bool support)
{
    NoThrow([&] {
        log_(TALIXLog::Info,
             std::string("Per-user and per-machine installations may both serve: ") + (support ? "yes" : "no"));
    });
}

bool ServerManager::Start(const Arguments& arguments, std::int64_t timeout, std::int64_t& processId)
{
    const std::wstring executable = Executable();
    if (executable.empty())
    {
        log_(TALIXLog::Error, "Failed to start a server: no server application was found");
        return false;
    }
    return processes_.Start(executable, ProcessIdentity(), WidenAll(arguments), timeout, processId);
}

std::wstring ServerManager::Executable() const
{
    const std::lock_guard lock(mutex_);
    return executable_;
}

void ServerManager::CopyExecutable(wchar_t* buffer, int capacity) const
{
    NoThrow([&] {
        const std::wstring executable = Executable();
        if (buffer != nullptr && capacity > 0 && executable.size() < static_cast<std::size_t>(capacity))
            std::copy_n(executable.c_str(), executable.size() + 1, buffer);
    });
}

} // namespace Kestrany::Agent
