#ifndef AGENT_TESTS_TESTSESSION_H
#define AGENT_TESTS_TESTSESSION_H

#include <vector>

#include "identity/simulated/Logins.h"
#include "plugin/Session.h"

namespace Kestrany::Agent {

/// Keeps logins in memory, and can be told to fail.
class MemoryStorage final : public Simulated::LoginStorage
{
public:
    bool Save(Server server, const std::optional<Simulated::LoginRecord>& record) override
    {
        if (!fails)
            records[server] = record;
        return !fails;
    }
    std::optional<Simulated::LoginRecord> Load(Server server) override { return records[server]; }
    void Refuse(Server, const std::string& reason) override { refusal = reason; }

    std::map<Server, std::optional<Simulated::LoginRecord>> records;
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

    /// The parts of the session's logins. The signature repeats what was signed, and protects nothing.
    Simulated::LoginParts Parts()
    {
        return {[this] { return now; },
                [this] { return ticks; },
                [this](void* bytes, std::size_t size) {
                    for (std::size_t index = 0; index < size; ++index)
                        static_cast<unsigned char*>(bytes)[index] = nextByte++;
                },
                {"test-key", [](const std::string& text) { return "signed " + text.substr(0, 57); }},
                [this](const LoginEvent& event) { session.Receive(event); }};
    }

    Simulated::TimePoint now{std::chrono::seconds(1'700'000'000)};
    std::int64_t ticks = 1'000'000;
    unsigned char nextByte = 0;
    EventQueue events;
    MemoryStorage storage;
    Simulated::Scenario scenario = MakeScenario();
    Simulated::Logins logins{scenario, Parts(), storage};
    Session session{logins, events};

private:
    static Simulated::Scenario MakeScenario()
    {
        Simulated::Scenario scenario;
        scenario.users = Accounts();
        return scenario;
    }
};

} // namespace Kestrany::Agent

#endif
