// A stored login: what the agent reads from its own file.

#include <cstdint>
#include <string>

#include "Require.h"
#include "identity/openid/StoredLogin.h"

using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const StoredLoginOrigin origin{"identity", TALIX_SERVER_PRODUCTION, "https://a.example"};
    std::string problem;
    const auto login = ReadStoredLogin(Secret(std::string(data, data + size)), origin, problem);
    Require(login.has_value() == problem.empty(), "there is a problem exactly where there is no login");
    if (!login)
        return 0;
    const Secret written = WriteStoredLogin(*login, origin);
    const auto again = ReadStoredLogin(written.Clone(), origin, problem);
    Require(again.has_value(), "a login that was written can be read");
    Require(WriteStoredLogin(*again, origin).View() == written.View(), "a login is kept by writing and reading");
    return 0;
}
