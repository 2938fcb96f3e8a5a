#include "identity/openid/LoginBook.h"

#include <algorithm>
#include <utility>

#include "identity/Json.h"

namespace Kestrany::Agent::OpenId {

namespace {

bool IsOf(const ClientLogin& login, const LoginKey& key)
{
    return login.clientId == key.clientId && login.scope == key.scope;
}

/// The upper limit of the bytes that a login takes in its store.
std::size_t StoredSize(const ClientLogin& login)
{
    // Claims are a text within a text: each of their characters can become two.
    return login.accessToken.Size() + login.idToken.Size() + login.refreshToken.Size() +
           2 * WriteJson(login.claims).size() + 4096;
}

ClientLogin Copy(const ClientLogin& login)
{
    ClientLogin copy;
    copy.clientId = login.clientId;
    copy.scope = login.scope;
    copy.accessToken = login.accessToken.Clone();
    copy.accessExpiry = login.accessExpiry;
    copy.idToken = login.idToken.Clone();
    copy.idExpiry = login.idExpiry;
    copy.refreshToken = login.refreshToken.Clone();
    copy.nonce = login.nonce;
    copy.subject = login.subject;
    copy.claims = login.claims;
    copy.hasUserInfo = login.hasUserInfo;
    return copy;
}

} // namespace

LoginBook::LoginBook(std::string identity, std::map<Server, std::string> issuers, std::shared_ptr<LoginStore> store,
                     Report report)
    : identity_(std::move(identity)), issuers_(std::move(issuers)), store_(std::move(store)), report_(std::move(report))
{
    for (const auto& [server, issuer] : issuers_)
        realms_[server] = {};
}

void LoginBook::Load(Server server, const std::function<bool(const ClientLogin&)>& isUsable)
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return;
    realm->second = {};
    std::optional<Secret> text = store_->Load(server);
    if (!text)
        return;
    std::string problem;
    std::optional<StoredLogin> stored =
        ReadStoredLogin(*std::move(text), {identity_, server, issuers_.at(server)}, problem);
    if (!stored)
        return report_(TALIXLog::Warning, "The stored login at " + ServerName(server) + " is refused: " + problem);
    for (ClientLogin& login : stored->clients)
    {
        if (isUsable(login))
            realm->second.entries.push_back({nextNumber_++, std::move(login)});
    }
}

bool LoginBook::Read(const LoginKey& key, const std::function<void(const ClientLogin&)>& read) const
{
    const std::lock_guard lock(mutex_);
    const Entry* const entry = Find(key);
    if (entry != nullptr)
        read(entry->login);
    return entry != nullptr;
}

bool LoginBook::HasAny(Server server) const
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    return realm != realms_.end() && !realm->second.entries.empty();
}

std::vector<LoginKey> LoginBook::Keys(Server server) const
{
    const std::lock_guard lock(mutex_);
    std::vector<LoginKey> keys;
    if (const auto realm = realms_.find(server); realm != realms_.end())
    {
        for (const Entry& entry : realm->second.entries)
            keys.push_back({server, entry.login.clientId, entry.login.scope});
    }
    return keys;
}

std::optional<LoginBook::Number> LoginBook::NumberOf(const LoginKey& key) const
{
    const std::lock_guard lock(mutex_);
    const Entry* const entry = Find(key);
    return entry == nullptr ? std::nullopt : std::optional(entry->number);
}

bool LoginBook::Put(Server server, ClientLogin login)
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return false;
    const LoginKey key{server, login.clientId, login.scope};
    std::vector<Entry>& entries = realm->second.entries;
    std::vector<Entry> earlier;
    earlier.reserve(entries.size());
    for (const Entry& entry : entries)
        earlier.push_back({entry.number, Copy(entry.login)});
    entries.erase(
        std::remove_if(entries.begin(), entries.end(), [&](const Entry& entry) { return IsOf(entry.login, key); }),
        entries.end());
    entries.push_back({nextNumber_++, std::move(login)});
    const auto isTooLarge = [&] {
        if (entries.size() <= 1 || entries.size() > MaxClients)
            return entries.size() > MaxClients;
        std::size_t size = 0;
        for (const Entry& entry : entries)
            size += StoredSize(entry.login);
        return size > MaxStored;
    };
    while (isTooLarge())
        entries.erase(entries.begin());
    if (Store(server))
        return true;
    entries = std::move(earlier);
    return false;
}

bool LoginBook::Change(const LoginKey& key, Number number, const std::function<void(ClientLogin&)>& change)
{
    const std::lock_guard lock(mutex_);
    Entry* const entry = Find(key, number);
    if (entry == nullptr)
        return false;
    ClientLogin earlier = Copy(entry->login);
    change(entry->login);
    if (Store(key.server))
        return true;
    entry->login = std::move(earlier);
    return false;
}

bool LoginBook::KeepRefreshToken(const LoginKey& key, Number number, const Secret& token)
{
    const std::lock_guard lock(mutex_);
    Entry* const entry = Find(key, number);
    if (entry == nullptr)
        return false;
    entry->login.refreshToken = token.Clone();
    return Store(key.server);
}

bool LoginBook::StoreAgain(Server server)
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    return realm == realms_.end() || !realm->second.isUnsaved || Store(server);
}

bool LoginBook::Remove(const LoginKey& key, Number number)
{
    const std::lock_guard lock(mutex_);
    if (Find(key, number) == nullptr)
        return false;
    std::vector<Entry>& entries = realms_.at(key.server).entries;
    entries.erase(
        std::remove_if(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.number == number; }),
        entries.end());
    // Also if it stays in the store: the provider does not accept it any more.
    Store(key.server);
    return true;
}

std::optional<std::vector<ClientLogin>> LoginBook::RemoveAll(Server server)
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return std::vector<ClientLogin>();
    std::vector<Entry> removed = std::exchange(realm->second.entries, {});
    if (!Store(server))
    {
        realm->second.entries = std::move(removed);
        return std::nullopt;
    }
    std::vector<ClientLogin> logins;
    logins.reserve(removed.size());
    for (Entry& entry : removed)
        logins.push_back(std::move(entry.login));
    return logins;
}

LoginBook::Entry* LoginBook::Find(const LoginKey& key)
{
    const auto realm = realms_.find(key.server);
    if (realm == realms_.end())
        return nullptr;
    std::vector<Entry>& entries = realm->second.entries;
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) { return IsOf(entry.login, key); });
    return found == entries.end() ? nullptr : &*found;
}

LoginBook::Entry* LoginBook::Find(const LoginKey& key, Number number)
{
    Entry* const entry = Find(key);
    return entry != nullptr && entry->number == number ? entry : nullptr;
}

/// The lock is held.
bool LoginBook::Store(Server server)
{
    Realm& realm = realms_.at(server);
    bool isStored = false;
    if (realm.entries.empty())
        isStored = store_->Save(server, nullptr);
    else
    {
        // The logins are lent to the writer, and come back.
        StoredLogin login;
        for (Entry& entry : realm.entries)
            login.clients.push_back(std::move(entry.login));
        const Secret text = WriteStoredLogin(login, {identity_, server, issuers_.at(server)});
        for (std::size_t index = 0; index < login.clients.size(); ++index)
            realm.entries[index].login = std::move(login.clients[index]);
        isStored = store_->Save(server, &text);
    }
    realm.isUnsaved = !isStored;
    return isStored;
}

} // namespace Kestrany::Agent::OpenId
