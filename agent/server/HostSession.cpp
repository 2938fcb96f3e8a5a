#include "server/HostSession.h"

#include <algorithm>
#include <exception>
#include <map>
#include <utility>

#include "identity/Json.h"

namespace Kestrany::Agent {

namespace {

/// How much longer than the announced wait a host keeps its request open. Milliseconds.
constexpr std::int64_t Margin = 10'000;

/// Logins of one host that may wait at once.
constexpr std::size_t MaxWaiting = 64;

/// Other requests of one host that may wait at once.
constexpr std::size_t MaxPrepared = 1024;

bool Flag(const Json::Value& arguments, const char* name)
{
    return arguments[name].isBool() && arguments[name].asBool();
}

std::string TextOf(const Json::Value& arguments, const char* name)
{
    std::string text;
    TakeText(arguments, name, text);
    return text;
}

Json::Value TextResult(const std::string& text)
{
    Json::Value result(Json::objectValue);
    result["text"] = text;
    return result;
}

Json::Value ToJson(const LoginStatus& status)
{
    Json::Value result(Json::objectValue);
    result["loggedIn"] = status.loggedIn;
    result["loginExpired"] = status.loginExpired;
    result["tokenExpired"] = status.tokenExpired;
    result["loginExpiry"] = status.loginExpiry;
    result["tokenExpiry"] = status.tokenExpiry;
    result["user"] = status.userName;
    return result;
}

Json::Value ToJson(const Account& account)
{
    Json::Value result(Json::objectValue);
    result["userId"] = account.userId;
    result["userName"] = account.userName;
    result["firstName"] = account.firstName;
    result["lastName"] = account.lastName;
    result["email"] = account.email;
    result["displayName"] = account.displayName;
    result["profile"] = account.profile;
    return result;
}

/// An operation's code and further results.
struct Outcome
{
    IdErrorCode code;
    Json::Value result{Json::objectValue};
};

using Operation = Outcome (*)(SourceLogins&, const Request&);

Outcome AutomatedLogin(SourceLogins& logins, const Request& request)
{
    const Json::Value& arguments = request.arguments;
    return {logins.AutomatedLogin(request.caller, TextOf(arguments, "user"), TextOf(arguments, "secret"),
                                  Flag(arguments, "replace"))};
}

Outcome GetStatus(SourceLogins& logins, const Request& request)
{
    LoginStatus status;
    const IdErrorCode code = logins.GetStatus(request.caller, status);
    return {code, ToJson(status)};
}

Outcome GetUser(SourceLogins& logins, const Request& request)
{
    Account account;
    const IdErrorCode code = logins.GetAccount(request.caller, account);
    return {code, ToJson(account)};
}

Outcome GetAccessToken(SourceLogins& logins, const Request& request)
{
    std::string token;
    const IdErrorCode code = logins.GetAccessToken(request.caller, Flag(request.arguments, "renew"), token);
    return {code, TextResult(token)};
}

Outcome GetIdToken(SourceLogins& logins, const Request& request)
{
    std::string token;
    const IdErrorCode code = logins.GetIdToken(request.caller, token);
    return {code, TextResult(token)};
}

Outcome GetSessionUri(SourceLogins& logins, const Request& request)
{
    const Json::Value& flag = request.arguments["flag"];
    std::string address;
    const IdErrorCode code = logins.OpenAddress(request.caller, TextOf(request.arguments, "target"),
                                                static_cast<std::uint16_t>(flag.isUInt() ? flag.asUInt() : 0), address);
    return {code, TextResult(address)};
}

/// Those that need nothing but the logins; HostSession performs the others.
const std::map<std::string, Operation>& OperationTable()
{
    static const std::map<std::string, Operation> operations = {
        {Operations::AutomatedLogin, AutomatedLogin},
        {Operations::Logout,
         [](SourceLogins& logins, const Request& request) -> Outcome { return {logins.Logout(request.caller)}; }},
        {Operations::CancelLogin,
         [](SourceLogins& logins, const Request& request) -> Outcome { return {logins.CancelLogin(request.caller)}; }},
        {Operations::GetStatus, GetStatus},
        {Operations::GetUser, GetUser},
        {Operations::GetAccessToken, GetAccessToken},
        {Operations::GetIdToken, GetIdToken},
        {Operations::RefreshToken,
         [](SourceLogins& logins, const Request& request) -> Outcome {
             return {logins.RefreshToken(request.caller, Flag(request.arguments, "onlyExpired"))};
         }},
        {Operations::GetSessionUri, GetSessionUri},
        {Operations::Restore,
         [](SourceLogins& logins, const Request& request) -> Outcome {
             return {logins.Restore(request.caller, Flag(request.arguments, "replace"))};
         }},
    };
    return operations;
}

} // namespace

HostSession::HostSession(HostRegistry& registry, Send send)
    : registry_(registry), send_(std::move(send)), attachUntil_(registry.Parts().ticks() + AttachLimit)
{
    registry_.Add(*this);
}

HostSession::~HostSession()
{
    registry_.Remove(*this);
}

bool HostSession::Receive(const std::string& message)
{
    if (givenUp_)
        return false;
    std::string problem;
    const std::optional<Request> request = ReadRequest(message, problem);
    if (request && request->caller.server == TALIX_SERVER_UNAVAILABLE)
        problem = "it names no server";
    if (!request || !problem.empty())
    {
        registry_.Parts().warn("A connection is closed for an invalid message: " + problem);
        return false;
    }
    if (logins_ == nullptr && request->operation != Operations::Attach)
    {
        registry_.Parts().warn("A connection is closed: its host did not attach first");
        return false;
    }
    try
    {
        return Handle(*request);
    }
    catch (const std::exception& error)
    {
        registry_.Parts().warn(request->operation + " failed: " + error.what());
        Respond(request->id, IdFailed);
        return true;
    }
}

void HostSession::Deliver(const std::string& identity, const LoginEvent& event) const
{
    if (logins_ != nullptr && identity == identity_)
        send_(WriteEvent(event));
}

bool HostSession::IsOverdue() const
{
    return !IsAttached() && !givenUp_ && registry_.Parts().ticks() >= attachUntil_;
}

void HostSession::RunTimers()
{
    if (IsOverdue())
    {
        registry_.Parts().warn("A connection is closed: its host did not attach in time");
        GiveUp();
    }
    waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(),
                                  [this](const WaitingLogin& waiting) { return PollLogin(waiting); }),
                   waiting_.end());
    prepared_.erase(std::remove_if(prepared_.begin(), prepared_.end(),
                                   [this](const WaitingRequest& waiting) { return PollRequest(waiting); }),
                    prepared_.end());
    SendDelayed();
}

std::optional<std::int64_t> HostSession::NextTimer() const
{
    std::optional<std::int64_t> next;
    if (!IsAttached() && !givenUp_)
        next = attachUntil_;
    if (!delayed_.empty())
        next = delayed_.front().due; // A host that has not attached has none.
    for (const WaitingLogin& waiting : waiting_)
        next = next ? std::min(*next, waiting.login->Limit()) : waiting.login->Limit();
    for (const WaitingRequest& waiting : prepared_)
        next = next ? std::min(*next, waiting.work->Limit()) : waiting.work->Limit();
    return next;
}

bool HostSession::Handle(const Request& request)
{
    if (const Fault* fault = registry_.Source().NextFault(request.operation))
    {
        registry_.Parts().warn("Fault of the scenario at " + request.operation);
        switch (fault->effect)
        {
        case FaultEffect::Crash:
            registry_.Parts().crash();
            return false;
        case FaultEffect::Hang:
            return true;
        case FaultEffect::Result:
            Respond(request.id, fault->result);
            return true;
        }
    }
    if (request.operation == Operations::Attach)
        return Attach(request);
    Perform(request);
    return true;
}

bool HostSession::Attach(const Request& request)
{
    const Json::Value& version = request.arguments["protocol"];
    const std::string identity = TextOf(request.arguments, "identity");
    if (version != Json::Value(ProtocolVersion) || logins_ != nullptr)
    {
        registry_.Parts().warn("A host is refused: its protocol version differs");
        Respond(request.id, IdProtocolError);
        return false;
    }
    SourceLogins* const logins = registry_.Source().FindLogins(identity);
    if (logins == nullptr)
    {
        registry_.Parts().warn("A host is refused: there are no logins for its server identity");
        Respond(request.id, IdProtocolError);
        return false;
    }
    Json::Value result(Json::objectValue);
    result["restored"] = logins->IsValid(request.caller.server);
    Respond(request.id, IdSuccess, std::move(result));
    identity_ = identity;
    logins_ = logins;
    return true;
}

void HostSession::Perform(const Request& request)
{
    SourceLogins* const logins = logins_;
    if (logins == nullptr)
        return; // Never: a message of a host that is not attached closes its connection.
    if (request.operation == Operations::Login)
        return Login(*logins, request);
    if (request.operation == Operations::GetFeatures)
    {
        const Features features = registry_.Source().OfferedFeatures();
        Json::Value result(Json::objectValue);
        result["idToken"] = features.idToken;
        result["loginMode"] = features.loginMode;
        return Respond(request.id, IdSuccess, std::move(result));
    }
    if (OperationTable().count(request.operation) == 0)
        return Respond(request.id, IdProtocolError);
    const bool flag = Flag(request.arguments, "renew") || Flag(request.arguments, "onlyExpired");
    std::unique_ptr<PendingWork> work = logins->Prepare(request.operation, request.caller, flag);
    if (!work)
        return PerformNow(*logins, request);
    if (prepared_.size() == MaxPrepared)
    {
        registry_.Parts().warn(request.operation + " is refused: too many requests of the host wait");
        return Respond(request.id, IdFailed);
    }
    ExtendDeadline(request.id, work->Limit());
    prepared_.push_back({request, std::move(work)});
}

void HostSession::PerformNow(SourceLogins& logins, const Request& request)
{
    Outcome outcome = OperationTable().at(request.operation)(logins, request);
    Respond(request.id, outcome.code, std::move(outcome.result));
}

void HostSession::Login(SourceLogins& logins, const Request& request)
{
    std::unique_ptr<PendingLogin> pending;
    if (waiting_.size() < MaxWaiting)
        pending = logins.BeginLogin(request.caller);
    if (!pending)
    {
        LoginResult result;
        result.code = logins.Login(request.caller, result.detail);
        return RespondToLogin(request.id, result);
    }
    ExtendDeadline(request.id, pending->Limit());
    waiting_.push_back({request.id, std::move(pending)});
}

void HostSession::Respond(std::uint32_t id, IdErrorCode code, Json::Value result)
{
    std::string message = WriteResponse({id, code, std::move(result)});
    if (message.size() > MaxMessage)
    {
        registry_.Parts().warn("A response of " + std::to_string(message.size()) + " bytes is replaced by result " +
                               std::to_string(static_cast<int>(IdTextTooLong)) + ": a message has at most " +
                               std::to_string(MaxMessage));
        message = WriteResponse({id, IdTextTooLong});
    }
    const std::int64_t latency = registry_.Source().Latency().count();
    // Attaching has a limit of its own, and the connection of a refused host is closed at once.
    if (latency == 0 || !IsAttached())
        return send_(std::move(message));
    send_(WriteDeadlineExtension({id, static_cast<std::uint32_t>(latency + Margin)}));
    heldBack_ += message.size();
    delayed_.push_back({registry_.Parts().ticks() + latency, std::move(message)});
}

void HostSession::RespondToLogin(std::uint32_t id, const LoginResult& result)
{
    Json::Value object(Json::objectValue);
    object["detail"] = static_cast<Json::UInt>(result.detail);
    Respond(id, result.code, std::move(object));
}

bool HostSession::PollLogin(const WaitingLogin& waiting)
{
    const std::optional<LoginResult> result = waiting.login->Poll();
    if (result)
        RespondToLogin(waiting.id, *result);
    return result.has_value();
}

bool HostSession::PollRequest(const WaitingRequest& waiting)
{
    const std::optional<IdErrorCode> code = waiting.work->Poll();
    if (!code)
        return false;
    try
    {
        if (*code != IdSuccess || waiting.work->IsWholeOperation())
            Respond(waiting.request.id, *code);
        else
            PerformNow(*logins_, waiting.request);
    }
    catch (const std::exception& error)
    {
        registry_.Parts().warn(waiting.request.operation + " failed: " + error.what());
        Respond(waiting.request.id, IdFailed);
    }
    return true;
}

void HostSession::ExtendDeadline(std::uint32_t id, std::int64_t limit) const
{
    const std::int64_t wait = std::max<std::int64_t>(limit - registry_.Parts().ticks(), 0);
    send_(WriteDeadlineExtension({id, static_cast<std::uint32_t>(wait + Margin)}));
}

void HostSession::SendDelayed()
{
    const std::int64_t now = registry_.Parts().ticks();
    while (!delayed_.empty() && delayed_.front().due <= now)
    {
        heldBack_ -= delayed_.front().message.size();
        send_(std::move(delayed_.front().message));
        delayed_.pop_front();
    }
}

} // namespace Kestrany::Agent
