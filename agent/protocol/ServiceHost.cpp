#include "protocol/ServiceHost.h"

#include <algorithm>
#include <exception>
#include <map>
#include <utility>

#include "session/Json.h"
#include "session/Operations.h"

namespace Kestrany::Agent {

namespace {

/// How much longer than the scenario says a host is to wait. Milliseconds.
constexpr std::int64_t Margin = 10'000;

/// Logins that one host may have waiting at once.
constexpr std::size_t MaxWaiting = 64;

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

/// An operation's code, and what it answers beyond that.
struct Outcome
{
    IdErrorCode code;
    Json::Value result{Json::objectValue};
};

using Operation = Outcome (*)(Logins&, const Request&);

Outcome AutomatedLogin(Logins& logins, const Request& request)
{
    const Json::Value& arguments = request.arguments;
    return {logins.AutomatedLogin(request.caller, TextOf(arguments, "user"), TextOf(arguments, "secret"),
                                  Flag(arguments, "replace"))};
}

Outcome GetStatus(Logins& logins, const Request& request)
{
    LoginStatus status;
    const IdErrorCode code = logins.GetStatus(request.caller, status);
    return {code, ToJson(status)};
}

Outcome GetUser(Logins& logins, const Request& request)
{
    Account account;
    const IdErrorCode code = logins.GetAccount(request.caller, account);
    return {code, ToJson(account)};
}

Outcome GetAccessToken(Logins& logins, const Request& request)
{
    std::string token;
    const IdErrorCode code = logins.GetAccessToken(request.caller, Flag(request.arguments, "renew"), token);
    return {code, TextResult(token)};
}

Outcome GetIdToken(Logins& logins, const Request& request)
{
    std::string token;
    const IdErrorCode code = logins.GetIdToken(request.caller, token);
    return {code, TextResult(token)};
}

Outcome GetSessionUri(Logins& logins, const Request& request)
{
    const Json::Value& flag = request.arguments["flag"];
    std::string address;
    const IdErrorCode code = logins.OpenAddress(request.caller, TextOf(request.arguments, "target"),
                                                static_cast<std::uint16_t>(flag.isUInt() ? flag.asUInt() : 0), address);
    return {code, TextResult(address)};
}

/// Those that need nothing but the logins; the others are ServiceHost's own.
const std::map<std::string, Operation>& OperationTable()
{
    static const std::map<std::string, Operation> operations = {
        {Operations::AutomatedLogin, AutomatedLogin},
        {Operations::Logout,
         [](Logins& logins, const Request& request) -> Outcome { return {logins.Logout(request.caller)}; }},
        {Operations::CancelLogin,
         [](Logins& logins, const Request& request) -> Outcome { return {logins.CancelLogin(request.caller)}; }},
        {Operations::GetStatus, GetStatus},
        {Operations::GetUser, GetUser},
        {Operations::GetAccessToken, GetAccessToken},
        {Operations::GetIdToken, GetIdToken},
        {Operations::RefreshToken,
         [](Logins& logins, const Request& request) -> Outcome {
             return {logins.RefreshToken(request.caller, Flag(request.arguments, "onlyExpired"))};
         }},
        {Operations::GetSessionUri, GetSessionUri},
        {Operations::Restore,
         [](Logins& logins, const Request& request) -> Outcome {
             return {logins.Restore(request.caller, Flag(request.arguments, "replace"))};
         }},
    };
    return operations;
}

} // namespace

ServiceHost::ServiceHost(SignInService& service, Send send)
    : service_(service), send_(std::move(send)), attachUntil_(service.Parts().ticks() + AttachLimit)
{
    service_.Add(*this);
}

ServiceHost::~ServiceHost()
{
    service_.Remove(*this);
}

bool ServiceHost::Receive(const std::string& message)
{
    if (givenUp_)
        return false;
    std::string problem;
    const std::optional<Request> request = ReadRequest(message, problem);
    if (!request)
    {
        service_.Parts().warn("A host was sent away for its message: " + problem);
        return false;
    }
    if (logins_ == nullptr && request->operation != Operations::Attach)
    {
        service_.Parts().warn("A host was sent away: it did not attach");
        return false;
    }
    try
    {
        return Handle(*request);
    }
    catch (const std::exception& error)
    {
        service_.Parts().warn(request->operation + " failed: " + error.what());
        Answer(request->id, IdFailed);
        return true;
    }
}

void ServiceHost::Deliver(const std::string& identity, const LoginEvent& event) const
{
    if (logins_ != nullptr && identity == identity_)
        send_(WriteEvent(event));
}

bool ServiceHost::IsOverdue() const
{
    return !IsAttached() && !givenUp_ && service_.Parts().ticks() >= attachUntil_;
}

void ServiceHost::Review()
{
    if (IsOverdue())
    {
        service_.Parts().warn("A host was sent away: it did not attach in time");
        GiveUp();
    }
    waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(),
                                  [this](const Waiting& waiting) { return EndsWaiting(waiting); }),
                   waiting_.end());
    SendDue();
}

std::optional<std::int64_t> ServiceHost::NextReview() const
{
    std::optional<std::int64_t> next;
    if (!IsAttached() && !givenUp_)
        next = attachUntil_;
    if (!delayed_.empty())
        next = delayed_.front().due; // A host that has not attached has none.
    for (const Waiting& waiting : waiting_)
        next = next ? std::min(*next, waiting.until) : waiting.until;
    return next;
}

bool ServiceHost::Handle(const Request& request)
{
    if (const Fault* fault = service_.NextFault(request.operation))
    {
        service_.Parts().warn("Fault of the scenario at " + request.operation);
        switch (fault->effect)
        {
        case FaultEffect::Crash:
            service_.Parts().crash();
            return false;
        case FaultEffect::Hang:
            return true;
        case FaultEffect::Result:
            Answer(request.id, fault->result);
            return true;
        }
    }
    if (request.operation == Operations::Attach)
        return Attach(request);
    Perform(request);
    return true;
}

bool ServiceHost::Attach(const Request& request)
{
    const Json::Value& version = request.arguments["protocol"];
    const std::string identity = TextOf(request.arguments, "identity");
    if (version != Json::Value(ProtocolVersion) || logins_ != nullptr)
    {
        service_.Parts().warn("A host was sent away: it speaks another version of the protocol");
        Answer(request.id, IdProtocolError);
        return false;
    }
    Logins* const logins = service_.FindLogins(identity);
    if (logins == nullptr)
    {
        service_.Parts().warn("A host was sent away: its server identity is not valid");
        Answer(request.id, IdProtocolError);
        return false;
    }
    Json::Value result(Json::objectValue);
    result["restored"] = logins->IsValid(request.caller.server);
    Answer(request.id, IdSuccess, std::move(result));
    identity_ = identity;
    logins_ = logins;
    return true;
}

void ServiceHost::Perform(const Request& request)
{
    if (request.operation == Operations::GetFeatures)
    {
        Json::Value result(Json::objectValue);
        result["idToken"] = service_.CurrentScenario().offersIdToken;
        result["loginMode"] = service_.CurrentScenario().offersLoginMode;
        return Answer(request.id, IdSuccess, std::move(result));
    }
    const bool signsIn = request.operation == Operations::Login || request.operation == Operations::AutomatedLogin;
    if (signsIn && !service_.HasScenario())
        return AnswerLogin(request.id, IdScenarioInvalid, LoginDetail::NotLoggedIn);
    if (request.operation == Operations::Login)
    {
        if (Waits(request))
            return;
        auto detail = LoginDetail::NotLoggedIn;
        const IdErrorCode code = logins_->Login(request.caller, detail);
        return AnswerLogin(request.id, code, detail);
    }
    const auto operation = OperationTable().find(request.operation);
    if (operation == OperationTable().end())
        return Answer(request.id, IdProtocolError);
    Outcome outcome = operation->second(*logins_, request);
    Answer(request.id, outcome.code, std::move(outcome.result));
}

bool ServiceHost::Waits(const Request& request)
{
    const Scenario& scenario = service_.CurrentScenario();
    if (scenario.login != LoginBehavior::Wait || request.caller.clientId.empty() ||
        logins_->IsValid(request.caller.server) || waiting_.size() == MaxWaiting)
        return false;
    const std::int64_t wait = std::chrono::milliseconds(scenario.loginWait).count();
    send_(WriteExtension({request.id, static_cast<std::uint32_t>(wait + Margin)}));
    waiting_.push_back({request.id, request.caller.server, service_.Parts().ticks() + wait,
                        logins_->Cancellations(request.caller.server)});
    return true;
}

void ServiceHost::Answer(std::uint32_t id, IdErrorCode code, Json::Value result)
{
    std::string message = WriteResponse({id, code, std::move(result)});
    if (message.size() > MaxMessage)
    {
        service_.Parts().warn("An answer of " + std::to_string(message.size()) + " bytes is replaced by result " +
                              std::to_string(static_cast<int>(IdTextTooLong)) + ": no more than " +
                              std::to_string(MaxMessage) + " fit a message");
        message = WriteResponse({id, IdTextTooLong});
    }
    const std::int64_t latency = service_.CurrentScenario().latency.count();
    // Who connects has a limit of its own, and who is refused is gone at once.
    if (latency == 0 || !IsAttached())
        return send_(std::move(message));
    send_(WriteExtension({id, static_cast<std::uint32_t>(latency + Margin)}));
    heldBack_ += message.size();
    delayed_.push_back({service_.Parts().ticks() + latency, std::move(message)});
}

void ServiceHost::AnswerLogin(std::uint32_t id, IdErrorCode code, LoginDetail detail)
{
    Json::Value result(Json::objectValue);
    result["detail"] = static_cast<Json::UInt>(detail);
    Answer(id, code, std::move(result));
}

bool ServiceHost::EndsWaiting(const Waiting& waiting)
{
    if (logins_->IsValid(waiting.server))
    {
        AnswerLogin(waiting.id, IdSuccess, LoginDetail::AlreadyLoggedIn);
        return true;
    }
    if (logins_->Cancellations(waiting.server) != waiting.cancellations)
    {
        AnswerLogin(waiting.id, IdLoginCancelled, LoginDetail::NotLoggedIn);
        return true;
    }
    if (service_.Parts().ticks() < waiting.until)
        return false;
    logins_->WaitTimedOut(waiting.server);
    AnswerLogin(waiting.id, IdLoginTimedOut, LoginDetail::NotLoggedIn);
    return true;
}

void ServiceHost::SendDue()
{
    const std::int64_t now = service_.Parts().ticks();
    while (!delayed_.empty() && delayed_.front().due <= now)
    {
        heldBack_ -= delayed_.front().message.size();
        send_(std::move(delayed_.front().message));
        delayed_.pop_front();
    }
}

} // namespace Kestrany::Agent
