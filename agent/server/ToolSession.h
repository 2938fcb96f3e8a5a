#ifndef AGENT_SERVER_TOOLSESSION_H
#define AGENT_SERVER_TOOLSESSION_H

#include <cstdint>
#include <functional>
#include <optional>

#include "connection/Message.h"

namespace Kestrany::Agent {

/// One connected tool at the server process's own pipe, which pings or freezes the process.
class ToolSession final : public MessageHandler
{
public:
    /// Returns the result of an operation; nullopt for an unknown one.
    using Perform = std::function<std::optional<Json::Value>(const std::string& operation)>;

    /// `afterResponse` is called once a response is on its way, before any other message is handled. The connection
    /// ends when `ticks` (milliseconds) reaches `limit`.
    ToolSession(Perform perform, std::function<void()> afterResponse, Send send, std::function<std::int64_t()> ticks,
                std::int64_t limit);

    bool Receive(const std::string& message) override;
    bool IsGivenUp() const override { return ticks_() >= limit_; }

private:
    const Perform perform_;
    const std::function<void()> afterResponse_;
    const Send send_;
    const std::function<std::int64_t()> ticks_;
    const std::int64_t limit_;
};

} // namespace Kestrany::Agent

#endif
