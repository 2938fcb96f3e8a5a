#ifndef AGENT_TESTS_TESTSESSION_H
#define AGENT_TESTS_TESTSESSION_H

#include <vector>

#include "session/Logins.h"
#include "session/Session.h"

namespace Kestrany::Agent {

/// Keeps logins in memory, and can be told to fail.
class MemoryStorage final : public LoginStorage
{
public:
    bool Save(Server server, const std::optional<LoginRecord>& record) override
    {
        if (!fails)
            records[server] = record;
        return !fails;
    }
    std::optional<LoginRecord> Load(Server server) override { return records[server]; }
    void Refuse(Server, const std::string& reason) override { refusal = reason; }

    std::map<Server, std::optional<LoginRecord>> records;
    std::string refusal;
    bool fails = false;
};

/// A session whose time stands still until the test moves it, with two accounts and a product at the server in use.
class TestSession
{
public:
    TestSession()
    {
        ProductSettings product;
        product.clientId = "tests";
        session.SetProduct(TALIX_SERVER_PRODUCTION, product);
    }

    std::vector<IdentityServices::IdServicesConsts::IdServicesEvent> TakeEvents()
    {
        std::vector<IdentityServices::IdServicesConsts::IdServicesEvent> kinds;
        while (const auto event = events.Pop())
            kinds.push_back(event->kind);
        return kinds;
    }

    void LogIn()
    {
        LoginDetail detail{};
        session.Login(detail);
        events.Clear();
    }

    static std::vector<Account> Accounts()
    {
        Account ann;
        ann.userId = "1";
        ann.userName = "ann";
        ann.secret = "a-secret";
        Account bob;
        bob.userId = "2";
        bob.userName = "bob";
        bob.secret = "b-secret";
        return {ann, bob};
    }

    /// What the session's logins are made of. The signature says what was signed, and protects nothing.
    LoginParts Parts()
    {
        return {[this] { return now; },
                [this](void* bytes, std::size_t size) {
                    for (std::size_t index = 0; index < size; ++index)
                        static_cast<unsigned char*>(bytes)[index] = nextByte++;
                },
                {"test-key", [](const std::string& text) { return "signed " + text.substr(0, 57); }},
                [this](const LoginEvent& event) { session.Receive(event); }};
    }

    TimePoint now{std::chrono::seconds(1'700'000'000)};
    unsigned char nextByte = 0;
    EventQueue events;
    MemoryStorage storage;
    Scenario scenario = MakeScenario();
    Logins logins{scenario, Parts(), storage};
    Session session{logins, events};

private:
    static Scenario MakeScenario()
    {
        Scenario scenario;
        scenario.users = Accounts();
        return scenario;
    }
};

} // namespace Kestrany::Agent

#endif
