#ifndef AGENT_PROTOCOL_SERVICEHOST_H
#define AGENT_PROTOCOL_SERVICEHOST_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "protocol/Message.h"
#include "protocol/SignInService.h"

namespace Kestrany::Agent {

/// One host at the service: takes its requests, answers them in the scenario's way, and tells it what happens.
class ServiceHost
{
public:
    /// Sends a message to the host. Must not call back.
    using Send = std::function<void(std::string message)>;

    /// Milliseconds that a host has to attach, of the service's ticks. No host waits longer for its connection.
    static constexpr std::int64_t AttachLimit = 20'000;

    ServiceHost(SignInService& service, Send send);
    ~ServiceHost();
    ServiceHost(const ServiceHost&) = delete;
    ServiceHost& operator=(const ServiceHost&) = delete;

    /// Takes one message. False when the host does not keep to the protocol: it is to be sent away.
    bool Receive(const std::string& message);
    void Deliver(const std::string& identity, const LoginEvent& event) const;
    bool IsAttached() const { return logins_ != nullptr; }
    /// Ends the connection: nothing more is taken from the host.
    void GiveUp() { givenUp_ = true; }
    bool IsGivenUp() const { return givenUp_; }
    /// Bytes of the answers that the scenario's latency holds back.
    std::size_t HeldBack() const { return heldBack_; }
    void SayQuits() const { send_(WriteQuits()); }

    /// See SignInService.
    void Review();
    std::optional<std::int64_t> NextReview() const;

private:
    /// A login that waits for a user.
    struct Waiting
    {
        std::uint32_t id;
        Server server;
        std::int64_t until;
        unsigned int cancellations;
    };
    /// An answer that is held back.
    struct Delayed
    {
        std::int64_t due;
        std::string message;
    };

    bool IsOverdue() const;
    bool Attach(const Request& request);
    bool Handle(const Request& request);
    void Perform(const Request& request);
    bool Waits(const Request& request);
    /// After the scenario's latency, once the host has attached.
    void Answer(std::uint32_t id, IdErrorCode code, Json::Value result = Json::objectValue);
    void AnswerLogin(std::uint32_t id, IdErrorCode code, LoginDetail detail);
    /// True, with the answer given, when the wait is over.
    bool EndsWaiting(const Waiting& waiting);
    void SendDue();

    SignInService& service_;
    const Send send_;
    const std::int64_t attachUntil_;
    bool givenUp_ = false;
    std::string identity_;
    Logins* logins_ = nullptr; ///< Null until the host has attached.
    std::vector<Waiting> waiting_;
    std::deque<Delayed> delayed_;
    std::size_t heldBack_ = 0;
};

} // namespace Kestrany::Agent

#endif
