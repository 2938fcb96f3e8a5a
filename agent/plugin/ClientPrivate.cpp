#include "plugin/ClientPrivate.h"

#include <utility>

#include "connection/ServerRequests.h"
#include "identity/LoginFile.h"
#include "identity/LoginService.h"
#include "platform/Base.h"
#include "platform/DataProtection.h"
#include "platform/Folders.h"
#include "plugin/NoThrow.h"
#include "plugin/ProductSettings.h"
#include "plugin/ProductTexts.h"
#include "plugin/Texts.h"
#include "server/ServerInstance.h"

namespace Kestrany::Agent {

using IdentityServices::FreezeCallback;
using IdentityServices::ProductConfig;
using IdentityServices::IdServicesConsts::IdServicesEvent;

namespace {

/// Milliseconds after which a server process without a response counts as frozen. Long enough for a busy machine.
constexpr std::int64_t ResponseLimit = 3000;

/// Stores the work's text, an empty one if it throws. The pointer is valid until the next call on the same thread.
template <class Text, class Work>
const typename Text::value_type* StoredText(Text& stored, Work&& work) noexcept
{
    stored = NoThrow(Text(), std::forward<Work>(work));
    return stored.c_str();
}

/// Asks the callback whether to thaw a frozen server process.
bool WantsThaw(FreezeCallback callback, DWORD processId)
{
    const std::string request = "frozen " + std::to_string(processId);
    char answer[16] = "";
    const int length = callback(request.c_str(), static_cast<int>(request.size() + 1), answer, sizeof answer, nullptr);
    return length > 0 && length < static_cast<int>(sizeof answer) &&
           std::string(answer, static_cast<std::size_t>(length)) == "thaw";
}

} // namespace

ClientPrivate::ClientPrivate(Session& session, EventQueue& events, const ServerManager& servers, LogSink log)
    : session_(session), events_(events), servers_(servers), log_(log), frozen_(std::move(log), ResponseLimit)
{
}

const wchar_t* ClientPrivate::ServerToServerName(Server server)
{
    thread_local std::wstring stored;
    return StoredText(stored, [&] { return Widen(ServerName(server)); });
}

Server ClientPrivate::ServerNameToServer(const wchar_t* name)
{
    return NoThrow(TALIX_SERVER_UNAVAILABLE, [&] {
        std::string narrow;
        return TakeWide(name, narrow) == IdSuccess ? ServerOfName(narrow) : TALIX_SERVER_UNAVAILABLE;
    });
}

const wchar_t* ClientPrivate::Encrypt(const wchar_t* text)
{
    thread_local std::wstring stored;
    return StoredText(stored, [&] {
        std::optional<std::wstring> encrypted;
        if (text != nullptr)
            encrypted = EncryptText(text);
        if (!encrypted)
            log_(TALIXLog::Warning, "Text not encrypted: null or not UTF-16");
        return encrypted.value_or(std::wstring());
    });
}

const wchar_t* ClientPrivate::GetSettingsPath()
{
    thread_local std::wstring stored;
    return StoredText(stored, [&] { return SettingsFolder(); });
}

void ClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule& schedule)
{
    NoThrow([&] { schedule = retries_.Active(); });
}

bool ClientPrivate::SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule)
{
    return NoThrow(false, [&] {
        const bool valid = retries_.Replace(schedule);
        if (!valid)
            log_(TALIXLog::Warning, "Retry schedule refused: a value is out of range");
        return valid;
    });
}

const wchar_t* ClientPrivate::GetLoginStateCacheFileWithFlag(const wchar_t* name, Server server, bool flag)
{
    thread_local std::wstring stored;
    return StoredText(stored, [&] {
        const std::wstring file = CacheFile(name, server);
        return flag && GetFileAttributesW(file.c_str()) == INVALID_FILE_ATTRIBUTES ? std::wstring() : file;
    });
}

const wchar_t* ClientPrivate::GetLoginStateCacheFile(const wchar_t* name, Server server)
{
    thread_local std::wstring stored;
    return StoredText(stored, [&] { return CacheFile(name, server); });
}

bool ClientPrivate::LoadLoginFromCache(bool flag)
{
    return NoThrow(false, [&] { return session_.Restore(flag) == IdSuccess; });
}

void ClientPrivate::RaiseEvent(IdServicesEvent event, bool flag)
{
    NoThrow([&] { events_.Push({event, flag ? IdSuccess : IdFailed, session_.GetServer()}); });
}

const char* ClientPrivate::ToJsonString(Server server, const ProductConfig* config)
{
    thread_local std::string stored;
    return StoredText(stored, [&] {
        ServerProduct product{server, {}};
        if (config == nullptr || ReadProduct(*config, product.product) != IdSuccess)
            return std::string();
        return ProductToJson(product);
    });
}

bool ClientPrivate::FromJsonString(Server* server, ProductConfig* config, const char* json)
{
    return NoThrow(false, [&] {
        std::string text;
        if (server == nullptr || config == nullptr || TakeNarrow(json, text) != IdSuccess)
            return false;
        const std::optional<ServerProduct> product = ProductFromJson(text);
        if (!product)
        {
            log_(TALIXLog::Warning, "Product configuration refused: not its JSON form");
            return false;
        }
        ReplaceProduct(product->product, *config);
        *server = product->server;
        return true;
    });
}

bool ClientPrivate::Equals(const ProductConfig& left, const ProductConfig& right)
{
    return NoThrow(false, [&] { return ReadTexts(left) == ReadTexts(right); });
}

void ClientPrivate::LockLoginStateFile()
{
    NoThrow([&] {
        if (!loginLock_.Lock(LoginLockFile(servers_.ServerIdentity())))
            log_(TALIXLog::Error, "Login state not locked: " + SystemMessage(GetLastError()));
    });
}

void ClientPrivate::UnlockLoginStateFile()
{
    NoThrow([&] {
        if (!loginLock_.Unlock())
            log_(TALIXLog::Warning, "Login state not unlocked: this process does not hold the lock");
    });
}

bool ClientPrivate::Ping(std::map<std::string, std::string>& answers)
{
    return NoThrow(false, [&] {
        const auto processId = FindServer(servers_.ProcessIdentity());
        if (!processId)
            return false;
        const auto texts = PingServer(*processId, ResponseLimit);
        if (!texts)
        {
            log_(TALIXLog::Warning, "Server process " + std::to_string(*processId) + " does not respond");
            frozen_.Add(*processId);
            return false;
        }
        frozen_.Remove(*processId);
        for (const auto& [name, value] : *texts)
            answers[name] = value;
        return true;
    });
}

void ClientPrivate::ClearEventQueue()
{
    NoThrow([&] { events_.Clear(); });
}

bool ClientPrivate::FreezeSSOServerProcess(FreezeCallback callback)
{
    return NoThrow(false, [&] {
        const auto processId = FindServer(servers_.ProcessIdentity());
        if (!processId || !FreezeServer(*processId, ResponseLimit))
            return false;
        log_(TALIXLog::Info, "Server process " + std::to_string(*processId) + " is frozen");
        frozen_.Add(*processId);
        if (callback == nullptr || !WantsThaw(callback, *processId))
            return true;
        const bool thawed = ThawServer(*processId, ResponseLimit);
        if (thawed)
            frozen_.Remove(*processId);
        return thawed;
    });
}

std::int64_t ClientPrivate::GetKillFrozenServerTimeout()
{
    return NoThrow(std::int64_t{0}, [&] { return frozen_.KillSeconds(); });
}

bool ClientPrivate::SetKillFrozenServerTimeout(std::int64_t seconds)
{
    return NoThrow(false, [&] { return frozen_.SetKillSeconds(seconds); });
}

const char* ClientPrivate::GetSessionState()
{
    thread_local std::string stored;
    return StoredText(stored, [&] { return session_.StateJson(); });
}

std::wstring ClientPrivate::CacheFile(const wchar_t* name, Server server) const
{
    if (name == nullptr || *name == L'\0')
        return LoginFile(servers_.ServerIdentity(), server);
    return LoginFile(NarrowStrictly(name).value_or(std::string()), server);
}

} // namespace Kestrany::Agent
