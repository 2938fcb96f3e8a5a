#ifndef AGENT_PLUGIN_SERVERCONNECTION_H
#define AGENT_PLUGIN_SERVERCONNECTION_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "connection/Conversation.h"
#include "connection/Message.h"
#include "connection/Pipe.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

/// The server process that a host uses, and how to start it.
struct ServerTarget
{
    std::wstring executable;
    std::string processIdentity;
    std::string serverIdentity;
    std::vector<std::wstring> arguments;

    /// Whether a connection to the one server serves for the other. Arguments only matter when a process is started.
    bool IsSameServer(const ServerTarget& other) const
    {
        return executable == other.executable && processIdentity == other.processIdentity &&
               serverIdentity == other.serverIdentity;
    }
};

/// A host's connection to its server process: opened when it is needed first, and opened again, with a new server
/// process, if the process dies. Any thread may call. No call takes longer than its limits.
class ServerConnection
{
public:
    /// For starting a server process and attaching to it.
    static constexpr std::chrono::milliseconds ConnectLimit{20'000};
    /// For the response to a request, unless the server extends the deadline.
    static constexpr std::chrono::milliseconds ResponseLimit{10'000};

    struct Parts
    {
        std::function<ServerTarget()> target;
        /// The identity server that the host uses. Each new connection asks whether somebody is signed in there.
        std::function<Server()> server;
        /// Called on the connection's own thread or on that of a call, before responses that the server sent later.
        std::function<void(const LoginEvent&)> onEvent;
        LogSink log;
    };

    explicit ServerConnection(Parts parts);
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    /// Connects, unless that is done. Ask connects in any case.
    void Open();
    /// Returns the server's response; the code of its refusal if it refuses the host; else IdServerUnavailable,
    /// IdServerLost, IdServerTimedOut or IdTextTooLong.
    Response Ask(Request request);
    /// Ends the connection and its thread. Pending calls return IdServerLost.
    void Close();

private:
    enum class State
    {
        Idle,
        Connecting,
        Open
    };
    /// A connected pipe and the messages on it.
    struct Channel
    {
        Channel(Handle file, ServerConnection& owner);

        PipeClient pipe;
        Conversation conversation;
    };
    /// The logins that were reported to the host. They may change while it has no connection.
    struct KnownLogins
    {
        std::string identity; ///< The server identity of the logins.
        std::set<Server> signedIn;
    };
    using Lock = std::unique_lock<std::mutex>;

    IdErrorCode AwaitOpen(Lock& lock, unsigned int generation);
    Response AskOnce(Lock& lock, Request& request, unsigned int generation);
    void DropOtherServer();

    // On the connection's own thread, except HandleEvent. An exception that left it would end the host.
    void Run();
    bool TryConnect() noexcept;
    /// True if the connection was lost; false if the server announced its shutdown.
    bool ReadUntilLost() noexcept;
    void Report(const std::string& problem) const noexcept;
    /// On success `channel_` is connected.
    IdErrorCode Connect(const ServerTarget& target);
    /// nullopt if another attempt may succeed.
    std::optional<IdErrorCode> ConnectOnce(const ServerTarget& target, const Deadline& deadline);
    std::optional<IdErrorCode> Attach(PipeClient& pipe, const ServerTarget& target, const Deadline& connecting);
    bool IsStopping();
    bool Adopt(const std::shared_ptr<Channel>& channel);
    /// Handles whether somebody is signed in at a new connection: a difference from before is an event.
    void HandleAttached(const std::string& identity, Server server, bool signedIn);
    void HandleEvent(const LoginEvent& event);
    void Disconnect();

    const Parts parts_;
    const ServerProcesses processes_;

    std::mutex closing_; ///< One thread closes at a time.
    std::mutex mutex_;
    std::condition_variable changed_;
    State state_ = State::Idle;
    bool wanted_ = false;                      ///< A connection is requested.
    bool stopping_ = false;                    ///< The thread is to end.
    unsigned int generation_ = 0;              ///< Grows with each Close, which ends the calls before it.
    unsigned int attempts_ = 0;                ///< Attempts to connect that have ended.
    IdErrorCode result_ = IdServerUnavailable; ///< Of the last attempt.
    ServerTarget connected_;
    std::shared_ptr<Channel> channel_;
    KnownLogins known_; ///< Used by the thread that reads messages.
    std::thread thread_;
};

} // namespace Kestrany::Agent

#endif
