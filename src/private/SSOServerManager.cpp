#include "orlindex/SSOServerManager.h"

#include "load/contract/ISSOServerManager.h"
#include "locate/Forwarding.h"

namespace Kestrany::IdentityServices {

void SSOServerManager::GetSSOServerAppFile(wchar_t* buffer, int capacity)
{
    ForwardOnly<&ISSOServerManager::GetSSOServerAppFile>(buffer, capacity);
}

void SSOServerManager::GetSSOServerAppExeFile(wchar_t* buffer, int capacity)
{
    ForwardOnly<&ISSOServerManager::GetSSOServerAppExeFile>(buffer, capacity);
}

bool SSOServerManager::StartSSOServerProcess(std::chrono::milliseconds timeout, std::int64_t& processId)
{
    return Forward<&ISSOServerManager::StartSSOServerProcess>(false, timeout.count(), processId);
}

bool SSOServerManager::IsSSOServerProcessRunning(std::int64_t& processId)
{
    return Forward<&ISSOServerManager::IsSSOServerProcessRunning>(false, processId);
}

bool SSOServerManager::IsSSOServerProcessRunning()
{
    std::int64_t processId = 0;
    return IsSSOServerProcessRunning(processId);
}

bool SSOServerManager::IsSSOServerProcessReady()
{
    return Forward<&ISSOServerManager::IsSSOServerProcessReady>(false);
}

bool SSOServerManager::QuitSSOServerProcess(std::chrono::milliseconds timeout)
{
    return Forward<&ISSOServerManager::QuitSSOServerProcess>(false, timeout.count());
}

bool SSOServerManager::QuitAllSSOServerProcesses(std::chrono::milliseconds timeout)
{
    return Forward<&ISSOServerManager::QuitAllSSOServerProcesses>(false, timeout.count());
}

SSOServerManager& SSOServerManager::operator=(const SSOServerManager&) = default;
SSOServerManager& SSOServerManager::operator=(SSOServerManager&&) noexcept = default;

} // namespace Kestrany::IdentityServices
