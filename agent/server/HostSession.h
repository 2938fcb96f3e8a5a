#ifndef AGENT_SERVER_HOSTSESSION_H
#define AGENT_SERVER_HOSTSESSION_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "connection/Message.h"
#include "server/HostRegistry.h"

namespace Kestrany::Agent {

/// One connected host at the server: performs its requests at the source of identity, and sends it responses and
/// events.
class HostSession final : public MessageHandler
{
public:
    /// Milliseconds from the connection within which a host has to attach.
    static constexpr std::int64_t AttachLimit = 20'000;

    HostSession(HostRegistry& registry, Send send);
    ~HostSession() override;
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    bool Receive(const std::string& message) override;
    void Deliver(const std::string& identity, const LoginEvent& event) const;
    bool IsAttached() const { return logins_ != nullptr; }
    /// Ends the session: no further message is handled.
    void GiveUp() { givenUp_ = true; }
    bool IsGivenUp() const override { return givenUp_; }
    /// Bytes of the responses that the source's latency holds back.
    std::size_t HeldBack() const override { return heldBack_; }
    void SendShutdown() { send_(WriteShutdown()); }

    /// See HostRegistry.
    void RunTimers();
    std::optional<std::int64_t> NextTimer() const;

private:
    struct WaitingLogin
    {
        std::uint32_t id; ///< Of the request.
        std::unique_ptr<PendingLogin> login;
    };
    struct WaitingRequest
    {
        Request request;
        std::unique_ptr<PendingWork> work;
    };
    struct DelayedMessage
    {
        std::int64_t due;
        std::string message;
    };

    bool IsOverdue() const;
    bool Attach(const Request& request);
    bool Handle(const Request& request);
    void Perform(const Request& request);
    /// Performs a request that needs nothing but the logins, and has nothing to wait for.
    void PerformNow(SourceLogins& logins, const Request& request);
    void Login(SourceLogins& logins, const Request& request);
    /// Sends the response after the source's latency, once the host has attached.
    void Respond(std::uint32_t id, IdErrorCode code, Json::Value result = Json::objectValue);
    void RespondToLogin(std::uint32_t id, const LoginResult& result);
    /// Sends the response and returns true if the wait is over.
    bool PollLogin(const WaitingLogin& waiting);
    bool PollRequest(const WaitingRequest& waiting);
    /// Announces that the response comes when the wait ends at the latest.
    void ExtendDeadline(std::uint32_t id, std::int64_t limit) const;
    void SendDelayed();

    HostRegistry& registry_;
    const Send send_;
    const std::int64_t attachUntil_;
    bool givenUp_ = false;
    std::string identity_;
    SourceLogins* logins_ = nullptr; ///< Null until the host has attached.
    std::vector<WaitingLogin> waiting_;
    std::vector<WaitingRequest> prepared_; ///< Requests whose work goes on.
    std::deque<DelayedMessage> delayed_;
    std::size_t heldBack_ = 0;
};

} // namespace Kestrany::Agent

#endif
