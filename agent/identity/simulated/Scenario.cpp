#include "identity/simulated/Scenario.h"

#include <algorithm>
#include <set>

#include "base/Json.h"
#include "base/JsonNumbers.h"
#include "identity/Json.h"
#include "identity/simulated/Suggestion.h"
#include "identity/simulated/Utf8.h"

namespace Kestrany::Agent::Simulated {

namespace {

using namespace IdentityServices;
using Names = std::vector<std::string>;

constexpr std::int64_t Day = 24 * 3600;
constexpr std::int64_t MaxWait = 600;
constexpr std::int64_t MaxLatency = 60'000;
constexpr std::int64_t MaxCall = 1'000'000;
/// A profile has to fit one message, together with the user's other texts.
constexpr std::size_t MaxProfileMembers = 256;
constexpr std::size_t MaxProfileBytes = 64 * 1024;

/// An error and its place: `offset` is the byte in the text.
struct ScenarioError
{
    std::ptrdiff_t offset;
    std::string key;
    std::string cause;
};

/// Without a byte order mark: neither the parser nor editors count it in columns.
std::string WithoutByteOrderMark(const std::string& contents)
{
    static const std::string mark = "\xEF\xBB\xBF";
    return contents.compare(0, mark.size(), mark) == 0 ? contents.substr(mark.size()) : contents;
}

std::string PlaceOf(const std::string& text, std::ptrdiff_t offset)
{
    const auto size = static_cast<std::ptrdiff_t>(text.size());
    const std::string before = text.substr(0, static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(offset, 0, size)));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0.
    return std::to_string(line) + ":" + std::to_string(before.size() - lineStart + 1);
}

std::string SyntaxProblem(const std::string& file, const JsonError& error)
{
    // Without a place the parser has given up at its limit of nesting.
    const std::string cause = error.line == 0 ? "it is nested too deeply" : error.text;
    return file + ":" + std::to_string(std::max(error.line, 1)) + ":" + std::to_string(std::max(error.column, 1)) +
           ": not valid JSON: " + cause;
}

/// Whether the value holds a number that JSON allows, but no program can represent.
bool HasNumberOutOfRange(const Json::Value& value)
{
    return IsNumberOutOfRange(value) || std::any_of(value.begin(), value.end(), HasNumberOutOfRange);
}

/// Walks through the document. Throws ScenarioError at the first error.
class ScenarioWalk
{
public:
    explicit ScenarioWalk(const std::string& text) : text_(text) {}

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
    [[noreturn]] static void Fail(std::ptrdiff_t offset, const std::string& key, const std::string& cause)
    {
        throw ScenarioError{offset, key, cause};
    }
    [[noreturn]] static void Fail(const Json::Value& value, const std::string& key, const std::string& cause)
    {
        Fail(value.getOffsetStart(), key, cause);
    }

    static std::string Join(const std::string& path, const std::string& key)
    {
        return path.empty() ? key : path + "." + key;
    }
    static std::string Join(const std::string& path, Json::ArrayIndex index)
    {
        return path + "[" + std::to_string(index) + "]";
    }

    static const Json::Value* Find(const Json::Value& object, const std::string& key)
    {
        return object.find(key.data(), key.data() + key.size());
    }
    static const Json::Value& Need(const Json::Value& object, const std::string& path, const std::string& key)
    {
        const Json::Value* member = Find(object, key);
        if (member == nullptr)
            Fail(object, path, "the key \"" + key + "\" is missing");
        return *member;
    }

    static void RequireObject(const Json::Value& value, const std::string& path)
    {
        if (!value.isObject())
            Fail(value, path, "must be an object { ... }");
    }
    static void RequireArray(const Json::Value& value, const std::string& path)
    {
        if (!value.isArray())
            Fail(value, path, "must be an array [ ... ]");
    }

    void AllowKeys(const Json::Value& object, const std::string& path, const Names& allowed) const
    {
        for (const std::string& key : object.getMemberNames())
        {
            if (std::find(allowed.begin(), allowed.end(), key) != allowed.end())
                continue;
            const std::string suggestion = Suggestion(key, allowed);
            Fail(KeyOffset(object[key], key), Join(path, key),
                 "unknown key" + (suggestion.empty() ? std::string(".") : "; did you mean \"" + suggestion + "\"?") +
                     " Allowed here: " + Enumerated(allowed));
        }
    }
    /// The place of a key, which stands before its value: the parser keeps the places of values only.
    std::ptrdiff_t KeyOffset(const Json::Value& value, const std::string& key) const
    {
        const std::ptrdiff_t offset = value.getOffsetStart();
        const std::size_t found = text_.rfind('"' + key + '"', static_cast<std::size_t>(offset));
        return found == std::string::npos ? offset : static_cast<std::ptrdiff_t>(found);
    }

    static std::string Text(const Json::Value& value, const std::string& path, std::size_t minimum)
    {
        constexpr std::size_t maximum = 1024;
        std::string text;
        if (value.isString())
            text = value.asString();
        const std::size_t size = CharacterCount(text);
        if (!value.isString() || size < minimum || size > maximum || text.find('\0') != std::string::npos ||
            WellFormedSize(text) != text.size())
            Fail(value, path,
                 "must be a text of " + std::to_string(minimum) + " to " + std::to_string(maximum) +
                     " characters without a zero character or half a surrogate pair");
        return text;
    }
    static std::int64_t Integer(const Json::Value& value, const std::string& path, std::int64_t minimum,
                                std::int64_t maximum)
    {
        if (!value.isInt64() || value.isBool() || value.asInt64() < minimum || value.asInt64() > maximum)
            Fail(value, path,
                 "must be a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum));
        return value.asInt64();
    }
    static std::string Choice(const Json::Value& value, const std::string& path, const Names& allowed)
    {
        const std::string text = value.isString() ? value.asString() : std::string();
        if (!value.isString() || std::find(allowed.begin(), allowed.end(), text) == allowed.end())
        {
            const std::string suggestion = Suggestion(text, allowed);
            Fail(value, path,
                 "must be one of " + Enumerated(allowed) +
                     (suggestion.empty() ? std::string() : "; did you mean \"" + suggestion + "\"?"));
        }
        return text;
    }

    void TakeSeconds(const Json::Value& object, const std::string& path, const std::string& key, std::int64_t minimum,
                     std::int64_t maximum, std::chrono::seconds& seconds) const
    {
        if (const Json::Value* member = Find(object, key))
            seconds = std::chrono::seconds(Integer(*member, Join(path, key), minimum, maximum));
    }

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

    const std::string& text_;
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
    const std::string text = WithoutByteOrderMark(contents);
    if (const std::size_t good = WellFormedSize(text); good != text.size())
    {
        problem = file + ":" + PlaceOf(text, static_cast<std::ptrdiff_t>(good)) +
                  ": not UTF-8; save the file in this encoding";
        return std::nullopt;
    }
    if (WithoutByteOrderMark(text) != text)
    {
        problem = file + ":1:1: not valid JSON: a second byte order mark";
        return std::nullopt;
    }
    const ParsedJson document = ParseJson(text, JsonSyntax::Strict);
    if (!document.root)
    {
        problem = SyntaxProblem(file, document.error);
        return std::nullopt;
    }
    try
    {
        return ScenarioWalk(text).Read(*document.root);
    }
    catch (const ScenarioError& error)
    {
        problem = file + ":" + PlaceOf(text, error.offset) + ": " + error.key + ": " + error.cause;
    }
    return std::nullopt;
}

} // namespace Kestrany::Agent::Simulated
