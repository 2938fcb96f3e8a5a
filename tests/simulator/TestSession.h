#ifndef SIMULATOR_TESTS_TESTSESSION_H
#define SIMULATOR_TESTS_TESTSESSION_H

#include <vector>

#include "session/Session.h"

namespace Kestrany::Simulator {

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

    TimePoint now{std::chrono::seconds(1'700'000'000)};
    unsigned char nextByte = 0;
    EventQueue events;
    Session session{Accounts(), [this] { return now; },
                    [this](void* bytes, std::size_t size) {
                        for (std::size_t index = 0; index < size; ++index)
                            static_cast<unsigned char*>(bytes)[index] = nextByte++;
                    },
                    events};
};

} // namespace Kestrany::Simulator

#endif
