#ifndef AGENT_IDENTITY_OPENID_LOGINBOOK_H
#define AGENT_IDENTITY_OPENID_LOGINBOOK_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "base/LogLevel.h"
#include "identity/openid/StoredLogin.h"

namespace Kestrany::Agent::OpenId {

/// Receives the messages of the process.
using Report = std::function<void(TALIXLog::LogLevel, const std::string&)>;

/// Whose login it is: a product's at a server.
struct LoginKey
{
    Server server = TALIX_SERVER_UNAVAILABLE;
    std::string clientId;
    std::string scope;

    friend bool operator<(const LoginKey& left, const LoginKey& right)
    {
        return std::tie(left.server, left.clientId, left.scope) < std::tie(right.server, right.clientId, right.scope);
    }
};

/// The logins of one server identity, in memory and in their store: the one owner of their refresh tokens. Every change
/// is stored before it takes effect. Any thread may call; a call takes as long as the store, and waits for no network.
class LoginBook
{
public:
    // Of one server; the oldest logins are dropped.
    static constexpr std::size_t MaxClients = 32;
    static constexpr std::size_t MaxStored = 2 * 1024 * 1024; ///< Bytes. Stores read files of twice this size.

    /// Says which login it is: a later one of the same product has another number.
    using Number = std::uint64_t;

    /// `issuers`: of the servers that are configured.
    LoginBook(std::string identity, std::map<Server, std::string> issuers, std::shared_ptr<LoginStore> store,
              Report report);

    /// Reads the stored logins of a server, which replace those in memory. `isUsable`: whether a login is kept.
    void Load(Server server, const std::function<bool(const ClientLogin&)>& isUsable);

    /// Calls `read` with the login, if there is one. Must not call back.
    bool Read(const LoginKey& key, const std::function<void(const ClientLogin&)>& read) const;
    bool Has(const LoginKey& key) const { return NumberOf(key).has_value(); }
    bool HasAny(Server server) const;
    std::vector<LoginKey> Keys(Server server) const;
    std::optional<Number> NumberOf(const LoginKey& key) const;

    /// Adds a login, or replaces the one of the product. False, and no change, if it was not stored.
    bool Put(Server server, ClientLogin login);
    /// Changes a login that is still the one of this number. False, and no change, if it is not, or was not stored.
    bool Change(const LoginKey& key, Number number, const std::function<void(ClientLogin&)>& change);
    /// Keeps a new refresh token, for which the provider may have ended the earlier one. It stays in memory even if it
    /// was not stored: Store then tries again. False if it was not stored.
    bool KeepRefreshToken(const LoginKey& key, Number number, const Secret& token);
    /// Stores what could not be stored before. False if that fails again.
    bool StoreAgain(Server server);
    /// Removes one login, if it is still the one of this number. False if there is none.
    bool Remove(const LoginKey& key, Number number);
    /// Removes all logins of a server, and returns them. nullopt, and no change, if that was not stored.
    std::optional<std::vector<ClientLogin>> RemoveAll(Server server);

private:
    struct Entry
    {
        Number number;
        ClientLogin login;
    };
    struct Realm
    {
        std::vector<Entry> entries; ///< The oldest login first.
        bool isUnsaved = false;     ///< The store has an earlier state.
    };

    Entry* Find(const LoginKey& key);
    const Entry* Find(const LoginKey& key) const { return const_cast<LoginBook*>(this)->Find(key); }
    Entry* Find(const LoginKey& key, Number number);
    bool Store(Server server);

    const std::string identity_;
    const std::map<Server, std::string> issuers_;
    const std::shared_ptr<LoginStore> store_;
    const Report report_;

    mutable std::mutex mutex_;
    Number nextNumber_ = 1;
    std::map<Server, Realm> realms_;
};

} // namespace Kestrany::Agent::OpenId

#endif
