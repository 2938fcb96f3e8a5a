// Messages between hosts and the server, end to end within one process, and invalid messages.

#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <random>

#include "TestSession.h"
#include "connection/RemoteLogins.h"
#include "identity/simulated/SimulatedSource.h"
#include "server/HostSession.h"
#include "server/ToolSession.h"

namespace Kestrany::Agent {

namespace {

using namespace Simulated;
namespace Events = IdentityServices::IdServicesConsts;

/// A server with hosts in this process. Its time stands still until the test moves it.
class ProtocolTest : public testing::Test
{
protected:
    /// One host: its end of the connection and the server's.
    struct Host
    {
        explicit Host(HostRegistry& registry)
            : end(registry, [this](std::string message) { messages.push_back(std::move(message)); })
        {
        }

        std::optional<Response> TakeResponse()
        {
            std::optional<Response> response;
            for (const std::string& text : messages)
            {
                const std::optional<ServerMessage> message = ReadServerMessage(text);
                if (!message)
                    ADD_FAILURE() << text;
                else if (message->response)
                    response = message->response;
                else if (message->event)
                    events.push_back(message->event->kind);
                else if (message->deadlineExtension)
                    extensions.push_back(message->deadlineExtension->milliseconds);
            }
            messages.clear();
            return response;
        }
        Response Ask(Request request)
        {
            request.id = ++lastId;
            EXPECT_TRUE(end.Receive(WriteRequest(request)));
            const std::optional<Response> response = TakeResponse();
            EXPECT_TRUE(response);
            EXPECT_EQ(response->id, lastId);
            return *response;
        }
        Response Attach(const std::string& identity = "Tests")
        {
            Request request;
            request.operation = Operations::Attach;
            request.caller.server = TALIX_SERVER_PRODUCTION;
            request.arguments["protocol"] = ProtocolVersion;
            request.arguments["identity"] = identity;
            return Ask(request);
        }

        std::vector<std::string> messages;
        std::vector<Events::IdServicesEvent> events;
        std::vector<std::uint32_t> extensions;
        std::uint32_t lastId = 0;
        HostSession end;
        RemoteLogins logins{[this](Request request) { return Ask(std::move(request)); }};
    };

    SourceParts MakeSourceParts()
    {
        SourceParts parts;
        parts.clock = [this] { return session.now; };
        parts.ticks = [this] { return ticks; };
        parts.random = session.Parts().random;
        parts.signer = session.Parts().signer;
        parts.openStorage = [](const std::string& identity) -> std::unique_ptr<LoginStorage> {
            return identity == "bad" ? nullptr : std::make_unique<MemoryStorage>();
        };
        return parts;
    }

    ServerParts MakeServerParts()
    {
        ServerParts parts;
        parts.ticks = [this] { return ticks; };
        parts.warn = [this](const std::string& message) { warnings.push_back(message); };
        parts.crash = [this] { ++crashes; };
        return parts;
    }

    static Scenario MakeScenario()
    {
        Scenario scenario;
        scenario.users = TestSession::Accounts();
        return scenario;
    }

    TestSession session; // For its clock and accounts.
    std::int64_t ticks = 1'000'000;
    int crashes = 0;
    std::vector<std::string> warnings;
    Scenario scenario = MakeScenario();
    Caller caller{TALIX_SERVER_PRODUCTION, "tests", "openid"};
};

TEST_F(ProtocolTest, EveryOperationIsPerformedRemotely)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    EXPECT_EQ(host.Attach().code, IdSuccess);
    auto detail = LoginDetail::NotLoggedIn;
    EXPECT_EQ(host.logins.Login(caller, detail), IdSuccess);
    EXPECT_EQ(detail, LoginDetail::LoggedIn);
    LoginStatus status;
    EXPECT_EQ(host.logins.GetStatus(caller, status), IdSuccess);
    EXPECT_TRUE(status.IsValid());
    EXPECT_FALSE(status.tokenExpired);
    EXPECT_EQ(status.userName, "ann");
    EXPECT_EQ(status.tokenExpiry, 1'700'003'600u);
    Account account;
    EXPECT_EQ(host.logins.GetAccount(caller, account), IdSuccess);
    EXPECT_EQ(account.userId, "1");
    EXPECT_EQ(account.secret, "") << "stays in the server process";
    std::string access;
    std::string id;
    std::string address;
    EXPECT_EQ(host.logins.GetAccessToken(caller, true, access), IdSuccess);
    EXPECT_EQ(host.logins.GetIdToken(caller, id), IdSuccess);
    EXPECT_NE(access, id);
    EXPECT_EQ(host.logins.OpenAddress(caller, "https://a.example", 7, address), IdSuccess);
    EXPECT_NE(address.find("flag=7"), std::string::npos);
    EXPECT_EQ(host.logins.OpenAddress(caller, "file://a", 7, address), IdInvalidAddress);
    EXPECT_EQ(host.logins.RefreshToken(caller, true), IdSuccess);
    EXPECT_EQ(host.logins.Restore(caller, false), IdAlreadyLoggedIn);
    EXPECT_EQ(host.logins.AutomatedLogin(caller, "bob", "b-secret", false), IdAlreadyLoggedIn);
    EXPECT_EQ(host.logins.AutomatedLogin(caller, "bob", "b-secret", true), IdSuccess);
    bool idToken = false;
    bool loginMode = false;
    EXPECT_EQ(host.logins.GetFeatures(caller, idToken, loginMode), IdSuccess);
    EXPECT_TRUE(idToken && loginMode);
    EXPECT_EQ(host.logins.Logout(caller), IdSuccess);
    EXPECT_EQ(host.logins.Logout(caller), IdNotLoggedIn);
    EXPECT_EQ(host.events,
              (std::vector<Events::IdServicesEvent>{Events::LoggedIn, Events::TokenAvailable, Events::LoggedOut,
                                                    Events::LoggedIn, Events::TokenAvailable, Events::LoggedOut}));
}

TEST_F(ProtocolTest, HostsOfOneIdentityShareTheLoginAndOthersDoNot)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host first(registry);
    Host second(registry);
    Host stranger(registry);
    first.Attach();
    second.Attach();
    stranger.Attach("Strangers");
    LoginDetail detail{};
    first.logins.Login(caller, detail);
    LoginStatus status;
    second.logins.GetStatus(caller, status);
    EXPECT_TRUE(status.loggedIn);
    EXPECT_EQ(second.events, (std::vector<Events::IdServicesEvent>{Events::LoggedIn, Events::TokenAvailable}));
    stranger.logins.GetStatus(caller, status);
    EXPECT_FALSE(status.loggedIn);
    EXPECT_TRUE(stranger.events.empty());
    Host late(registry);
    EXPECT_TRUE(late.Attach().result["restored"].asBool());
}

TEST_F(ProtocolTest, AHostThatDoesNotAttachIsDisconnected)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Request request;
    request.operation = Operations::GetStatus;
    request.caller = caller;
    Host early(registry);
    EXPECT_FALSE(early.end.Receive(WriteRequest(request)));
    request.operation = Operations::Attach;
    request.arguments["protocol"] = ProtocolVersion + 1;
    request.arguments["identity"] = "Tests";
    EXPECT_FALSE(early.end.Receive(WriteRequest(request)));
    EXPECT_EQ(early.TakeResponse()->code, IdProtocolError);
    request.arguments["protocol"] = ProtocolVersion;
    request.arguments["identity"] = "bad";
    EXPECT_FALSE(early.end.Receive(WriteRequest(request)));
    EXPECT_EQ(warnings.size(), 3u);
}

TEST_F(ProtocolTest, AHostsRequestNamesAServer)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    Request request;
    request.operation = Operations::GetStatus;
    EXPECT_FALSE(host.end.Receive(WriteRequest(request)));
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(warnings.size(), 1u);
}

TEST_F(ProtocolTest, WithoutAScenarioNobodySignsIn)
{
    SimulatedSource source(std::nullopt, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    auto detail = LoginDetail::LoggedIn;
    EXPECT_EQ(host.logins.Login(caller, detail), IdScenarioInvalid);
    EXPECT_EQ(detail, LoginDetail::NotLoggedIn);
    EXPECT_EQ(host.logins.AutomatedLogin(caller, "ann", "a-secret", true), IdScenarioInvalid);
    LoginStatus status;
    EXPECT_EQ(host.logins.GetStatus(caller, status), IdSuccess);
}

TEST_F(ProtocolTest, ALoginWaitsUntilItsLimit)
{
    scenario.login = LoginBehavior::Wait;
    scenario.loginWait = std::chrono::seconds(5);
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    Request request;
    request.id = 77;
    request.operation = Operations::Login;
    request.caller = caller;
    ASSERT_TRUE(host.end.Receive(WriteRequest(request)));
    EXPECT_FALSE(host.TakeResponse());
    ASSERT_EQ(host.extensions.size(), 1u);
    EXPECT_GE(host.extensions.front(), 5000u);
    EXPECT_EQ(registry.NextTimer(), ticks + 5000);
    ticks += 4999;
    registry.RunTimers();
    EXPECT_FALSE(host.TakeResponse());
    ticks += 1;
    registry.RunTimers();
    const std::optional<Response> response = host.TakeResponse();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->id, 77u);
    EXPECT_EQ(response->code, IdLoginTimedOut);
    EXPECT_EQ(host.events.back(), Events::LoginDialogTimeoutInIdIPCServer);
    EXPECT_FALSE(registry.NextTimer());
}

TEST_F(ProtocolTest, AWaitingLoginIsCancelledOrOvertakenByAnotherHost)
{
    scenario.login = LoginBehavior::Wait;
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    Host other(registry);
    host.Attach();
    other.Attach();
    Request request;
    request.operation = Operations::Login;
    request.caller = caller;
    host.end.Receive(WriteRequest(request));
    other.logins.CancelLogin(caller);
    registry.RunTimers();
    EXPECT_EQ(host.TakeResponse()->code, IdLoginCancelled);
    host.end.Receive(WriteRequest(request));
    other.logins.AutomatedLogin(caller, "bob", "b-secret", false);
    registry.RunTimers();
    const std::optional<Response> response = host.TakeResponse();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->code, IdSuccess);
    EXPECT_EQ(response->result["detail"].asInt(), static_cast<int>(LoginDetail::AlreadyLoggedIn));
}

TEST_F(ProtocolTest, LatencyHoldsResponsesBackInTheirOrder)
{
    scenario.latency = std::chrono::milliseconds(300);
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    EXPECT_EQ(host.Attach().code, IdSuccess) << "attaching has its own limit";
    EXPECT_TRUE(host.extensions.empty());
    Request request;
    request.operation = Operations::GetStatus;
    request.caller = caller;
    for (request.id = 21; request.id <= 22; ++request.id)
        ASSERT_TRUE(host.end.Receive(WriteRequest(request)));
    registry.RunTimers();
    EXPECT_FALSE(host.TakeResponse());
    EXPECT_EQ(host.extensions.size(), 2u);
    EXPECT_EQ(registry.NextTimer(), ticks + 300);
    ticks += 300;
    registry.RunTimers();
    EXPECT_EQ(host.TakeResponse()->id, 22u);
}

TEST_F(ProtocolTest, ResponsesThatAreHeldBackAreCounted)
{
    scenario.latency = std::chrono::milliseconds(300);
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    EXPECT_EQ(host.end.HeldBack(), 0u);
    Request request;
    request.id = 21;
    request.operation = Operations::GetStatus;
    request.caller = caller;
    ASSERT_TRUE(host.end.Receive(WriteRequest(request)));
    const std::size_t one = host.end.HeldBack();
    EXPECT_GT(one, 0u);
    ticks += 100;
    ASSERT_TRUE(host.end.Receive(WriteRequest(request)));
    EXPECT_EQ(host.end.HeldBack(), 2 * one);
    ticks += 200;
    registry.RunTimers();
    EXPECT_EQ(host.end.HeldBack(), one);
    ticks += 100;
    registry.RunTimers();
    EXPECT_EQ(host.end.HeldBack(), 0u);
}

TEST_F(ProtocolTest, AHostThatDoesNotAttachInTimeIsDisconnected)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host first(registry);
    ticks += 5;
    Host second(registry);
    Host host(registry);
    host.Attach();
    EXPECT_EQ(registry.NextTimer(), ticks - 5 + HostSession::AttachLimit);
    ticks += HostSession::AttachLimit - 6;
    registry.RunTimers();
    EXPECT_FALSE(first.end.IsGivenUp());
    ticks += 1;
    registry.RunTimers();
    EXPECT_TRUE(first.end.IsGivenUp());
    EXPECT_FALSE(second.end.IsGivenUp());
    EXPECT_EQ(registry.NextTimer(), ticks + 5);
    ticks += 5;
    registry.RunTimers();
    EXPECT_TRUE(second.end.IsGivenUp());
    EXPECT_FALSE(host.end.IsGivenUp()) << "a host may be silent";
    EXPECT_FALSE(registry.NextTimer());
    EXPECT_EQ(warnings.size(), 2u);
}

TEST_F(ProtocolTest, ADisconnectedHostCannotAttach)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    ticks += HostSession::AttachLimit;
    registry.RunTimers();
    Request request;
    request.operation = Operations::Attach;
    request.caller = caller;
    request.arguments["protocol"] = ProtocolVersion;
    request.arguments["identity"] = "Tests";
    EXPECT_FALSE(host.end.Receive(WriteRequest(request)));
    EXPECT_FALSE(host.end.IsAttached());
}

TEST_F(ProtocolTest, TheOldestUnattachedConnectionMakesRoom)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    std::list<Host> silent;
    for (std::size_t count = 0; count < HostRegistry::MaxUnattached; ++count)
    {
        ASSERT_TRUE(registry.MakeRoom());
        silent.emplace_back(registry);
    }
    EXPECT_TRUE(warnings.empty());
    ASSERT_TRUE(registry.MakeRoom());
    EXPECT_TRUE(silent.front().end.IsGivenUp());
    EXPECT_FALSE(std::next(silent.begin())->end.IsGivenUp());
    Host host(registry);
    EXPECT_EQ(host.Attach().code, IdSuccess);
    ASSERT_TRUE(registry.MakeRoom());
    EXPECT_FALSE(std::next(silent.begin())->end.IsGivenUp()) << "the host is attached";
    EXPECT_FALSE(host.end.IsGivenUp());
}

TEST_F(ProtocolTest, HostsReplaceUnattachedConnections)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    std::list<Host> hosts;
    Host silent(registry);
    while (hosts.size() < HostRegistry::MaxConnections - 1)
    {
        ASSERT_TRUE(registry.MakeRoom());
        EXPECT_EQ(hosts.emplace_back(registry).Attach().code, IdSuccess);
    }
    EXPECT_FALSE(silent.end.IsGivenUp());
    ASSERT_TRUE(registry.MakeRoom());
    EXPECT_TRUE(silent.end.IsGivenUp());
    EXPECT_EQ(hosts.emplace_back(registry).Attach().code, IdSuccess);
    EXPECT_FALSE(registry.MakeRoom()) << "all of them are hosts";
    hosts.pop_front();
    EXPECT_TRUE(registry.MakeRoom());
}

TEST_F(ProtocolTest, ARefusedHostGetsItsResponseAtOnce)
{
    scenario.latency = std::chrono::milliseconds(300);
    scenario.faults = {{Operations::Attach, 1, false, FaultEffect::Result, IdLoginRefused}};
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    EXPECT_EQ(host.Attach().code, IdLoginRefused);
    Request request;
    request.operation = Operations::Attach;
    request.caller = caller;
    request.arguments["protocol"] = ProtocolVersion + 1;
    EXPECT_FALSE(host.end.Receive(WriteRequest(request)));
    const std::optional<Response> response = host.TakeResponse();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->code, IdProtocolError);
}

TEST_F(ProtocolTest, AnOperationThatThrowsFailsAlone)
{
    SourceParts parts = MakeSourceParts();
    bool fails = true;
    parts.random = [&, random = parts.random](void* bytes, std::size_t size) {
        if (fails)
            throw std::runtime_error("no random bytes");
        random(bytes, size);
    };
    SimulatedSource source(scenario, std::move(parts));
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    LoginDetail detail{};
    EXPECT_EQ(host.logins.Login(caller, detail), IdFailed);
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_NE(warnings.front().find("login failed: no random bytes"), std::string::npos) << warnings.front();
    fails = false;
    EXPECT_EQ(host.logins.Login(caller, detail), IdSuccess);
}

TEST_F(ProtocolTest, AResponseThatDoesNotFitAMessageBecomesACode)
{
    scenario.users.front().profile["long"] = std::string(300'000, 'x');
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    LoginDetail detail{};
    ASSERT_EQ(host.logins.Login(caller, detail), IdSuccess);
    Account account;
    EXPECT_EQ(host.logins.GetAccount(caller, account), IdTextTooLong);
    EXPECT_EQ(warnings.size(), 1u);
}

TEST_F(ProtocolTest, FaultsAffectTheCallsThatTheyName)
{
    scenario.faults = {{Operations::GetStatus, 2, false, FaultEffect::Result, IdFailed},
                       {Operations::GetStatus, 4, true, FaultEffect::Result, IdNotLoggedIn},
                       {Operations::Logout, 1, false, FaultEffect::Crash, IdFailed},
                       {Operations::Restore, 1, false, FaultEffect::Hang, IdFailed}};
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    std::vector<int> codes;
    LoginStatus status;
    for (int call = 0; call < 5; ++call)
        codes.push_back(host.logins.GetStatus(caller, status));
    EXPECT_EQ(codes, (std::vector<int>{IdSuccess, IdFailed, IdSuccess, IdNotLoggedIn, IdNotLoggedIn}));
    Request request;
    request.operation = Operations::Restore;
    request.caller = caller;
    EXPECT_TRUE(host.end.Receive(WriteRequest(request)));
    EXPECT_FALSE(host.TakeResponse());
    request.operation = Operations::Logout;
    EXPECT_FALSE(host.end.Receive(WriteRequest(request)));
    EXPECT_EQ(crashes, 1);
}

TEST_F(ProtocolTest, TextsThatAreTooLongAreShortened)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Host host(registry);
    host.Attach();
    caller.scope.assign(1'000'000, 's');
    LoginStatus status;
    EXPECT_EQ(host.logins.GetStatus(caller, status), IdSuccess);
    LoginDetail detail{};
    EXPECT_EQ(host.logins.Login(caller, detail), IdTextTooLong);
}

TEST_F(ProtocolTest, DamagedMessagesEndTheirConnectionAlone)
{
    SimulatedSource source(scenario, MakeSourceParts());
    HostRegistry registry(source, MakeServerParts());
    Request request;
    request.operation = Operations::AutomatedLogin;
    request.caller = caller;
    request.arguments["user"] = "ann";
    request.arguments["secret"] = "a-secret";
    const std::string good = WriteRequest(request);
    std::mt19937 random(20'260'101); // The same sequence each time.
    int taken = 0;
    for (int round = 0; round < 5'000; ++round)
    {
        std::string message = good;
        for (unsigned int changes = random() % 4 + 1; changes > 0; --changes)
        {
            const std::size_t place = random() % message.size();
            switch (random() % 3)
            {
            case 0:
                message[place] = static_cast<char>(random());
                break;
            case 1:
                message.erase(place, random() % 8);
                message += '}';
                break;
            default:
                message.insert(place, good.substr(random() % good.size(), 12));
            }
        }
        Host host(registry);
        host.Attach();
        taken += host.end.Receive(message) ? 1 : 0;
        host.TakeResponse();
        (void)ReadServerMessage(message);
    }
    EXPECT_GT(taken, 0) << "some changes are harmless";
    EXPECT_LT(taken, 5'000);
    Host last(registry);
    EXPECT_EQ(last.Attach().code, IdSuccess);
}

TEST(ToolSessionTest, EachRequestGetsAResponseUntilTheTimeIsOver)
{
    std::int64_t ticks = 99;
    std::vector<std::string> messages;
    std::vector<std::size_t> responded;
    ToolSession session(
        [](const std::string& operation) {
            return operation == "known" ? std::optional<Json::Value>(Json::objectValue) : std::nullopt;
        },
        [&] { responded.push_back(messages.size()); },
        [&](std::string message) { messages.push_back(std::move(message)); }, [&] { return ticks; }, 100);
    Request request;
    request.id = 3;
    for (const char* const operation : {"known", "unknown"})
    {
        request.operation = operation;
        EXPECT_TRUE(session.Receive(WriteRequest(request)));
    }
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(responded, (std::vector<std::size_t>{1, 2})) << "after each response, before the next message";
    EXPECT_EQ(ReadServerMessage(messages[0])->response->id, 3u);
    EXPECT_EQ(ReadServerMessage(messages[0])->response->code, IdSuccess);
    EXPECT_EQ(ReadServerMessage(messages[1])->response->code, IdProtocolError);
    EXPECT_FALSE(session.Receive("{}")) << "no request";
    EXPECT_FALSE(session.IsGivenUp());
    ticks = 100;
    EXPECT_TRUE(session.IsGivenUp());
}

TEST(RequestTest, ACallerIsWholeOrMissing)
{
    std::string problem;
    const std::string withoutCaller = R"({"id":1,"do":"ping","with":{}})";
    const std::optional<Request> request = ReadRequest(withoutCaller, problem);
    ASSERT_TRUE(request) << problem;
    EXPECT_EQ(request->caller.server, TALIX_SERVER_UNAVAILABLE);
    for (const char* text :
         {R"({"id":1,"do":"ping","client":"","scope":"","with":{}})", R"({"id":1,"do":"ping","scope":"","with":{}})",
          R"({"id":1,"do":"ping","server":"","client":"","scope":"","with":{}})",
          R"({"id":1,"do":"ping","server":"production","client":"","with":{}})"})
        EXPECT_FALSE(ReadRequest(text, problem)) << text;
}

TEST(ServerMessageTest, OtherTextsAreRefused)
{
    for (const char* text : {"", "1", "{}", "[]", R"({"quits":1})", R"({"id":1,"code":1000})",
                             R"({"id":-1,"code":1000,"result":{}})", R"({"id":1,"code":"1000","result":{}})",
                             R"({"event":1,"server":"nowhere","client":"","status":1000})", R"({"id":1,"takes":-5})"})
        EXPECT_FALSE(ReadServerMessage(text)) << text;
    EXPECT_TRUE(ReadServerMessage(WriteShutdown())->shutdown);
}

TEST(FrameTest, MessagesAreFoundHoweverTheyAreSplit)
{
    const std::vector<std::string> messages = {"one", "", std::string(70'000, 'x'), std::string("\xFF\0", 2)};
    std::string bytes;
    for (const std::string& message : messages)
        bytes += WriteFrame(message);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{3}, std::size_t{4096}, bytes.size()})
    {
        FrameReader reader;
        std::vector<std::string> found;
        for (std::size_t start = 0; start < bytes.size(); start += piece)
        {
            const std::string cut = bytes.substr(start, piece);
            reader.Add(cut.data(), cut.size());
            while (const std::optional<std::string> message = reader.Next())
                found.push_back(*message);
        }
        EXPECT_EQ(found, messages) << piece;
        EXPECT_FALSE(reader.IsBroken());
    }
}

TEST(FrameTest, ALengthBeyondTheLimitBreaksTheStream)
{
    const std::string longest = WriteFrame(std::string(MaxMessage, 'x'));
    FrameReader reader;
    reader.Add(longest.data(), longest.size());
    EXPECT_TRUE(reader.Next());
    const std::string longer = WriteFrame(std::string(MaxMessage + 1, 'x'));
    reader.Add(longer.data(), 4);
    EXPECT_FALSE(reader.Next());
    EXPECT_TRUE(reader.IsBroken());
    const std::string good = WriteFrame("good");
    reader.Add(good.data(), good.size());
    EXPECT_FALSE(reader.Next()) << "no message follows";
}

} // namespace

} // namespace Kestrany::Agent
