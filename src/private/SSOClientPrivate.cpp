#include "orlindex/SSOClientPrivate.h"

#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "locate/Forwarding.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr int productNameCapacity = 256;

/// Empty if the plugin returned null.
template <class Character>
std::basic_string<Character> TextOf(const Character* text)
{
    // not covered: Branches of the compiler: the copy may run out of memory.
    return text ? std::basic_string<Character>(text) : std::basic_string<Character>();
}

template <auto Operation, class... Arguments>
std::wstring ForwardWideText(Arguments&&... arguments)
{
    const wchar_t* const none = nullptr;
    return TextOf(Forward<Operation>(none, std::forward<Arguments>(arguments)...));
}

template <auto Operation, class... Arguments>
std::string ForwardNarrowText(Arguments&&... arguments)
{
    const char* const none = nullptr;
    return TextOf(Forward<Operation>(none, std::forward<Arguments>(arguments)...));
}

} // namespace

std::wstring SSOClientPrivate::ServerToServerName(Server server)
{
    return ForwardWideText<&ISSOClientPrivate::ServerToServerName>(server);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes the text by value.
Server SSOClientPrivate::ServerNameToServer(std::wstring name)
{
    return Forward<&ISSOClientPrivate::ServerNameToServer>(TALIX_SERVER_UNAVAILABLE, name.c_str());
}

std::wstring SSOClientPrivate::Encrypt(const std::wstring& text)
{
    return ForwardWideText<&ISSOClientPrivate::Encrypt>(text.c_str());
}

std::wstring SSOClientPrivate::GetSettingsPath()
{
    return ForwardWideText<&ISSOClientPrivate::GetSettingsPath>();
}

StdUtil::RetrySchedule SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()
{
    StdUtil::RetrySchedule schedule;
    ForwardOnly<&ISSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule>(schedule);
    return schedule;
}

bool SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule)
{
    return Forward<&ISSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule>(false, schedule);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes the text by value.
std::wstring SSOClientPrivate::GetLoginStateCacheFile(std::wstring name, Server server, bool flag)
{
    return ForwardWideText<&ISSOClientPrivate::GetLoginStateCacheFileWithFlag>(name.c_str(), server, flag);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes the text by value.
std::wstring SSOClientPrivate::GetLoginStateCacheFile(std::wstring name, Server server)
{
    return ForwardWideText<&ISSOClientPrivate::GetLoginStateCacheFile>(name.c_str(), server);
}

bool SSOClientPrivate::LoadLoginFromCache(bool flag)
{
    return Forward<&ISSOClientPrivate::LoadLoginFromCache>(false, flag);
}

void SSOClientPrivate::RaiseEvent(IdServicesConsts::IdServicesEvent event, bool flag)
{
    ForwardOnly<&ISSOClientPrivate::RaiseEvent>(event, flag);
}

std::string SSOClientPrivate::ToJsonString(Server server, const ProductConfig* config)
{
    return ForwardNarrowText<&ISSOClientPrivate::ToJsonString>(server, config);
}

bool SSOClientPrivate::FromJsonString(Server* server, ProductConfig* config, const std::string& json)
{
    return Forward<&ISSOClientPrivate::FromJsonString>(false, server, config, json.c_str());
}

bool SSOClientPrivate::Equals(const ProductConfig& left, const ProductConfig& right)
{
    return Forward<&ISSOClientPrivate::Equals>(false, left, right);
}

void SSOClientPrivate::LockLoginStateFile()
{
    ForwardOnly<&ISSOClientPrivate::LockLoginStateFile>();
}

void SSOClientPrivate::UnlockLoginStateFile()
{
    ForwardOnly<&ISSOClientPrivate::UnlockLoginStateFile>();
}

bool SSOClientPrivate::Ping(std::map<std::string, std::string>& answers)
{
    return Forward<&ISSOClientPrivate::Ping>(false, answers);
}

bool SSOClientPrivate::Ping()
{
    std::map<std::string, std::string> answers;
    return Ping(answers);
}

void SSOClientPrivate::ClearEventQueue()
{
    ForwardOnly<&ISSOClientPrivate::ClearEventQueue>();
}

bool SSOClientPrivate::FreezeSSOServerProcess(FreezeCallback callback)
{
    return Forward<&ISSOClientPrivate::FreezeSSOServerProcess>(false, callback);
}

std::chrono::seconds SSOClientPrivate::GetKillFrozenServerTimeout()
{
    return std::chrono::seconds(Forward<&ISSOClientPrivate::GetKillFrozenServerTimeout>(std::int64_t{0}));
}

bool SSOClientPrivate::SetKillFrozenServerTimeout(std::chrono::seconds timeout)
{
    return Forward<&ISSOClientPrivate::SetKillFrozenServerTimeout>(false, timeout.count());
}

std::string SSOClientPrivate::GetSessionState()
{
    return ForwardNarrowText<&ISSOClientPrivate::GetSessionState>();
}

int SSOClientPrivate::GetSSOServerName(char* buffer, int capacity)
{
    return Forward<&ISSOServerManager::GetSSOServerName>(0, buffer, capacity);
}

int SSOClientPrivate::GetSSOEventServerName(char* buffer, int capacity)
{
    return Forward<&ISSOServerManager::GetSSOEventServerName>(0, buffer, capacity);
}

bool SSOClientPrivate::StartSSOServerProcess(const char* const* arguments, int count, std::chrono::milliseconds timeout,
                                             std::int64_t& processId)
{
    return Forward<&ISSOServerManager::StartSSOServerProcessWithArguments>(false, arguments, count, timeout.count(),
                                                                           processId);
}

bool SSOClientPrivate::GetSSOServerProcessArguments(char** buffers, int count)
{
    return Forward<&ISSOServerManager::GetSSOServerProcessArguments>(false, buffers, count);
}

void SSOClientPrivate::SetSSOServerProcessArguments(const char* const* arguments, int count)
{
    ForwardOnly<&ISSOServerManager::SetSSOServerProcessArguments>(arguments, count);
}

std::wstring SSOClientPrivate::GetProductName()
{
    wchar_t buffer[productNameCapacity] = {};
    // By contract the whole buffer, not only the text up to its zero: callers expect this fixed length.
    return Forward<&ISSOClientModule::GetProductName>(0, buffer, productNameCapacity) > 0
               ? std::wstring(buffer, productNameCapacity)
               : std::wstring();
}

void SSOClientPrivate::SetProductName(const std::wstring& name)
{
    ForwardOnly<&ISSOClientModule::SetProductName>(name.c_str());
}

SSOClientPrivate& SSOClientPrivate::operator=(const SSOClientPrivate&) = default;
SSOClientPrivate& SSOClientPrivate::operator=(SSOClientPrivate&&) noexcept = default;

} // namespace Kestrany::IdentityServices
