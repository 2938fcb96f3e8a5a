#include "identity/simulated/Scenario.h"

#include <algorithm>
#include <set>

#include "identity/ConfigurationWalk.h"
#include "identity/Json.h"

namespace Kestrany::Agent::Simulated {

namespace {

using namespace IdentityServices;

constexpr std::int64_t Day = 24 * 3600;
constexpr std::int64_t MaxWait = 600;
constexpr std::int64_t MaxLatency = 60'000;
constexpr std::int64_t MaxCall = 1'000'000;
/// A profile has to fit one message, together with the user's other texts.
constexpr std::size_t MaxProfileMembers = 256;
constexpr std::size_t MaxProfileBytes = 64 * 1024;

/// Walks through the document. Throws ConfigurationError at the first error.
class ScenarioWalk : ConfigurationWalk
{
public:
    using ConfigurationWalk::ConfigurationWalk;

    Scenario Read(const Json::Value& root)
    {
        RequireObject(root, "the scenario");
        AllowKeys(root, "", {"$schema", "users", "login", "tokens", "latencyMilliseconds", "features", "faults"});
        if (const Json::Value* schema = Find(root, "$schema"))
            Text(*schema, "$schema", 0);
        Scenario scenario;
        if (const Json::Value* users = Find(root, "users"))
            scenario.users = Users(*users);
        if (const Json::Value* login = Find(root, "login"))
            ReadLogin(*login, scenario);
        if (const Json::Value* tokens = Find(root, "tokens"))
        {
            RequireObject(*tokens, "tokens");
            AllowKeys(*tokens, "tokens", {"lifetimeSeconds"});
            TakeSeconds(*tokens, "tokens", "lifetimeSeconds", 1, 365 * Day, scenario.tokenLifetime);
        }
        if (const Json::Value* latency = Find(root, "latencyMilliseconds"))
            scenario.latency = std::chrono::milliseconds(Integer(*latency, "latencyMilliseconds", 0, MaxLatency));
        if (const Json::Value* features = Find(root, "features"))
            ReadFeatures(*features, scenario);
        if (const Json::Value* faults = Find(root, "faults"))
            scenario.faults = Faults(*faults);
        return scenario;
    }

private:
    std::vector<Account> Users(const Json::Value& value) const
    {
        RequireArray(value, "users");
        if (value.empty())
            Fail(value, "users", "must hold at least one user");
        std::vector<Account> users;
        std::set<std::string> ids;
        std::set<std::string> names;
        for (Json::ArrayIndex index = 0; index < value.size(); ++index)
        {
            const std::string path = Join("users", index);
            users.push_back(User(value[index], path));
            if (!ids.insert(users.back().userId).second)
                Fail(value[index]["userId"], path + ".userId", "another user has this ID");
            if (!names.insert(users.back().userName).second)
                Fail(value[index]["userName"], path + ".userName", "another user has this name");
        }
        return users;
    }

    Account User(const Json::Value& value, const std::string& path) const
    {
        struct Member
        {
            const char* key;
            std::string Account::* text;
        };
        static constexpr Member members[] = {
            {"userId", &Account::userId},     {"userName", &Account::userName}, {"firstName", &Account::firstName},
            {"lastName", &Account::lastName}, {"email", &Account::email},       {"displayName", &Account::displayName},
            {"secret", &Account::secret},
        };
        RequireObject(value, path);
        Names allowed{"profile"};
        for (const Member& member : members)
            allowed.emplace_back(member.key);
        AllowKeys(value, path, allowed);
        Account account;
        account.userId = Text(Need(value, path, "userId"), Join(path, "userId"), 1);
        account.userName = Text(Need(value, path, "userName"), Join(path, "userName"), 1);
        for (const Member& member : members)
        {
            if (const Json::Value* text = Find(value, member.key))
                account.*member.text = Text(*text, Join(path, member.key), 0);
        }
        if (const Json::Value* profile = Find(value, "profile"))
        {
            RequireObject(*profile, Join(path, "profile"));
            if (HasNumberOutOfRange(*profile))
                Fail(*profile, Join(path, "profile"), "must not hold a number that is out of range");
            if (profile->size() > MaxProfileMembers || WriteJson(*profile).size() > MaxProfileBytes)
                Fail(*profile, Join(path, "profile"),
                     "must have no more than " + std::to_string(MaxProfileMembers) + " members and " +
                         std::to_string(MaxProfileBytes) + " bytes as JSON without white space");
            account.profile = *profile;
        }
        return account;
    }

    void ReadLogin(const Json::Value& value, Scenario& scenario) const
    {
        RequireObject(value, "login");
        AllowKeys(value, "login", {"behavior", "user", "waitSeconds", "lifetimeSeconds"});
        if (const Json::Value* behavior = Find(value, "behavior"))
        {
            static const Names names = {"accept", "refuse", "cancel", "wait"}; // In the order of the enumeration.
            const std::string name = Choice(*behavior, "login.behavior", names);
            scenario.login = static_cast<LoginBehavior>(std::find(names.begin(), names.end(), name) - names.begin());
        }
        if (const Json::Value* user = Find(value, "user"))
        {
            Names names;
            for (const Account& account : scenario.users)
                names.push_back(account.userName);
            scenario.loginUser = Choice(*user, "login.user", names);
        }
        TakeSeconds(value, "login", "waitSeconds", 1, MaxWait, scenario.loginWait);
        TakeSeconds(value, "login", "lifetimeSeconds", 1, 365 * Day, scenario.loginLifetime);
    }

    static void ReadFeatures(const Json::Value& value, Scenario& scenario)
    {
        RequireArray(value, "features");
        scenario.features = {};
        for (Json::ArrayIndex index = 0; index < value.size(); ++index)
        {
            const std::string name = Choice(value[index], Join("features", index), {"idToken", "loginMode"});
            (name == "idToken" ? scenario.features.idToken : scenario.features.loginMode) = true;
        }
    }

    std::vector<Fault> Faults(const Json::Value& value) const
    {
        RequireArray(value, "faults");
        std::vector<Fault> faults;
        faults.reserve(value.size());
        for (Json::ArrayIndex index = 0; index < value.size(); ++index)
            faults.push_back(OneFault(value[index], Join("faults", index)));
        return faults;
    }

    Fault OneFault(const Json::Value& value, const std::string& path) const
    {
        RequireObject(value, path);
        AllowKeys(value, path, {"operation", "call", "fromCall", "result", "effect"});
        Fault fault;
        fault.operation = Choice(Need(value, path, "operation"), Join(path, "operation"), FaultyOperations());
        const Json::Value* call = Find(value, "call");
        const Json::Value* fromCall = Find(value, "fromCall");
        if ((call == nullptr) == (fromCall == nullptr))
            Fail(value, path,
                 "needs exactly one of the keys \"call\" (that call alone) and \"fromCall\" (and all later)");
        fault.onwards = fromCall != nullptr;
        fault.call = static_cast<unsigned int>(
            Integer(fault.onwards ? *fromCall : *call, Join(path, fault.onwards ? "fromCall" : "call"), 1, MaxCall));
        const Json::Value* result = Find(value, "result");
        const Json::Value* effect = Find(value, "effect");
        if ((result == nullptr) == (effect == nullptr))
            Fail(value, path, "needs exactly one of the keys \"result\" (a code) and \"effect\" (\"crash\", \"hang\")");
        if (result != nullptr)
            fault.result = static_cast<IdErrorCode>(Integer(*result, Join(path, "result"), 1001, 9999));
        else
            fault.effect = Choice(*effect, Join(path, "effect"), {"crash", "hang"}) == "crash" ? FaultEffect::Crash
                                                                                               : FaultEffect::Hang;
        return fault;
    }
};

} // namespace

std::vector<Account> DefaultAccounts()
{
    Account sam;
    sam.userId = "simulator-0001";
    sam.userName = "sam.example@simulator";
    sam.firstName = "Sam";
    sam.lastName = "Example";
    sam.email = "sam.example@simulator.invalid";
    sam.displayName = "Sam Example (simulator)";
    sam.secret = "simulator";
    return {sam};
}

const std::vector<std::string>& FaultyOperations()
{
    static const std::vector<std::string> operations = {
        Operations::Attach,       Operations::Login,         Operations::AutomatedLogin, Operations::Logout,
        Operations::GetStatus,    Operations::GetUser,       Operations::GetAccessToken, Operations::GetIdToken,
        Operations::RefreshToken, Operations::GetSessionUri, Operations::Restore,
    };
    return operations;
}

std::optional<Scenario> ReadScenario(const std::string& contents, const std::string& file, std::string& problem)
{
    return ReadConfiguration<Scenario>(contents, file, problem, [](const std::string& text, const Json::Value& root) {
        return ScenarioWalk(text).Read(root);
    });
}

} // namespace Kestrany::Agent::Simulated
