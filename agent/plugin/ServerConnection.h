#ifndef AGENT_PLUGIN_SERVERCONNECTION_H
#define AGENT_PLUGIN_SERVERCONNECTION_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "connection/Message.h"
#include "connection/Pipe.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

/// Which server a host talks to, and how it is started where none runs.
struct ServerTarget
{
    std::wstring executable;
    std::string processIdentity;
    std::string serverIdentity;
    std::vector<std::wstring> arguments;

    /// Whether a connection to one serves for the other. Arguments matter at a start alone.
    bool IsSameServer(const ServerTarget& other) const
    {
        return executable == other.executable && processIdentity == other.processIdentity &&
               serverIdentity == other.serverIdentity;
    }
};

/// A host's connection to its server process: made when it is needed first, and made again, with a new server process,
/// when the server dies. Any thread may call. No call takes longer than its limits.
class ServerConnection
{
public:
    /// Until a server has started and taken the host.
    static constexpr std::chrono::milliseconds ConnectLimit{20'000};
    /// Until the answer to a request, unless the server says that it takes longer.
    static constexpr std::chrono::milliseconds AnswerLimit{10'000};
    /// No server may make a host wait longer for one answer.
    static constexpr std::chrono::milliseconds MaxExtension{15 * 60'000};

    struct Parts
    {
        std::function<ServerTarget()> target;
        /// The identity server that the host uses: whether somebody is signed in there is asked at each connection.
        std::function<Server()> server;
        /// Called on the link's own thread, before the answers that come after.
        std::function<void(const LoginEvent&)> onEvent;
        LogSink log;
    };

    explicit ServerConnection(Parts parts);
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    /// Connects, unless that is done. Who asks later connects in any case.
    void Open();
    /// The server's answer, that to the attempt to connect where it refuses the host, or one of the codes
    /// IdServerUnavailable, IdServerLost, IdServerTimedOut, IdTextTooLong.
    Response Ask(Request request);
    /// Ends the connection and the link's thread; who waits gets IdServerLost.
    void Close();

private:
    enum class State
    {
        Idle,
        Connecting,
        Open
    };
    enum class Outcome
    {
        Waiting,
        Answered,
        Lost
    };
    using TimeLimit = std::chrono::steady_clock::time_point;
    struct Pending
    {
        Outcome outcome = Outcome::Waiting;
        TimeLimit limit;
        Response response;
    };
    /// What the host heard of logins, which may change while it has no connection.
    struct Heard
    {
        std::string identity; ///< Server identity that it was at.
        std::set<Server> signedIn;
    };
    using Lock = std::unique_lock<std::mutex>;

    IdErrorCode AwaitOpen(Lock& lock, unsigned int generation);
    Response AskOnce(Lock& lock, Request& request, unsigned int generation);
    Response AwaitAnswer(Lock& lock, std::uint32_t id);
    void DropOtherServer();

    // On the link's own thread, which no exception may leave: it would end the host.
    void Run();
    bool TryConnect() noexcept;
    /// True when the connection was lost; false when the server said that it quits.
    bool ReadUntilLost() noexcept;
    void Report(const char* what, const std::exception& error) const noexcept;
    /// With success, `pipe_` is the connection.
    IdErrorCode Connect(const ServerTarget& target);
    /// Nothing where another try may succeed.
    std::optional<IdErrorCode> ConnectOnce(const ServerTarget& target, const Deadline& deadline);
    std::optional<IdErrorCode> Attach(PipeClient& pipe, const ServerTarget& target, const Deadline& connecting);
    bool Ends();
    bool Adopt(const std::shared_ptr<PipeClient>& pipe);
    /// Whether somebody is signed in as the connection is made: what differs from before is an event.
    void HearAtConnection(const std::string& identity, Server server, bool signedIn);
    void Hear(const LoginEvent& event);
    /// Until the connection ends. True when the server said that it quits.
    bool ReadOn(PipeClient& pipe);
    void Take(const ServerMessage& message);
    void Fail();

    const Parts parts_;
    const ServerProcesses processes_;

    std::mutex closing_; ///< One closes at a time.
    std::mutex mutex_;
    std::condition_variable changed_;
    State state_ = State::Idle;
    bool wanted_ = false;                      ///< Somebody asks for a connection.
    bool ends_ = false;                        ///< The thread is to end.
    unsigned int generation_ = 0;              ///< Grows when the link is closed; who asked before gets no further.
    unsigned int attempts_ = 0;                ///< Connections tried; who waits for one sees it end without success.
    IdErrorCode result_ = IdServerUnavailable; ///< What came of the last one.
    ServerTarget connected_;
    std::shared_ptr<PipeClient> pipe_;
    std::uint32_t nextId_ = 1;
    std::map<std::uint32_t, Pending> pending_;
    Heard heard_; ///< The link's thread alone.
    std::thread thread_;
};

} // namespace Kestrany::Agent

#endif
