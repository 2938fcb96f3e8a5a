#ifndef AGENT_CONNECTION_REMOTELOGINS_H
#define AGENT_CONNECTION_REMOTELOGINS_H

#include <functional>

#include "connection/Message.h"

namespace Kestrany::Agent {

/// The logins in the server process, reached by messages. Any thread may call if `ask` allows it.
class RemoteLogins final : public LoginService
{
public:
    /// Sends a request and returns its response; one with an error code if there is none. Chooses the ID.
    using Ask = std::function<Response(Request request)>;

    explicit RemoteLogins(Ask ask) : ask_(std::move(ask)) {}

    IdErrorCode Login(const Caller& caller, LoginDetail& detail) override;
    IdErrorCode AutomatedLogin(const Caller& caller, const std::string& userName, const std::string& secret,
                               bool replace) override;
    IdErrorCode Logout(const Caller& caller) override;
    IdErrorCode CancelLogin(const Caller& caller) override;
    IdErrorCode GetStatus(const Caller& caller, LoginStatus& status) override;
    IdErrorCode GetAccount(const Caller& caller, Account& account) override;
    IdErrorCode GetAccessToken(const Caller& caller, bool renew, std::string& token) override;
    IdErrorCode GetIdToken(const Caller& caller, std::string& token) override;
    IdErrorCode RefreshToken(const Caller& caller, bool onlyExpired) override;
    IdErrorCode OpenAddress(const Caller& caller, const std::string& target, std::uint16_t flag,
                            std::string& address) override;
    IdErrorCode Restore(const Caller& caller, bool replace) override;

    /// What the source offers. Asks the server process each time.
    IdErrorCode GetFeatures(const Caller& caller, bool& idToken, bool& loginMode);

private:
    Response Send(const char* operation, const Caller& caller, Json::Value arguments = Json::objectValue) const;
    IdErrorCode SendForText(const char* operation, const Caller& caller, Json::Value arguments,
                            std::string& text) const;

    const Ask ask_;
};

} // namespace Kestrany::Agent

#endif
