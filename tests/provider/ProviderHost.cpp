// A host that does what a driver tells it: one command a line on the standard input, "NUMBER COMMAND ARGUMENTS",
// separated by tabs. Each command runs on a thread of its own, as in a host with many threads, and replies with a line
// "NUMBER CODE TEXT" when it is done; replies come in any order. The driver is agent.mjs.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <windows.h>

#include "orlindex/IdServicesAutomation.h"
#include "orlindex/IdServicesMgr.h"
#include "orlindex/SSOServerManager.h"
#include "orlindex/talix.h"

using namespace Kestrany::IdentityServices;

namespace {

constexpr int TextCapacity = 64 * 1024;

struct Result
{
    int code = IdSuccess;
    std::string text{};
};

using Arguments = std::vector<std::string>;

std::string ToUtf8(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
    narrow.pop_back(); // The terminating zero.
    return narrow;
}

int ToNumber(const std::string& text)
{
    return std::atoi(text.c_str());
}

/// Collects events, with their status.
class Observer final : public IObserver
{
public:
    void OnLoggedIn(const std::int32_t& status) override { Add("logged in", status); }
    void OnLoggedOut(const std::int32_t& status) override { Add("logged out", status); }
    void OnAccountCreated(const std::int32_t& status) override { Add("account created", status); }
    void OnTokenRefreshed(const std::int32_t& status) override { Add("token refreshed", status); }
    void OnTokenAvailable(const std::int32_t& status) override { Add("token available", status); }
    void OnServerChanged(const Server& server) override { Add("server changed", server); }
    bool OnAboutToLogout() override { return true; }
    void OnLoginRestored() override { Add("login restored", IdSuccess); }
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent& event) override { Add("other", event); }

    std::string Take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(events_, {});
    }

private:
    void Add(const char* name, int status)
    {
        const std::lock_guard lock(mutex_);
        events_ += (events_.empty() ? "" : "; ") + std::string(name) + " " + std::to_string(status);
    }

    std::mutex mutex_;
    std::string events_;
};

Observer& HostObserver()
{
    static Observer observer;
    return observer;
}

IdServicesMgr& Manager()
{
    return *IdServicesMgr::GetInstance();
}

Result Start(const Arguments&)
{
    const IdErrorCode code = IdServicesMgr::Initialize();
    if (code == IdSuccess)
        Manager().AddObserver(&HostObserver());
    return {code};
}

Result SetBackoff(const Arguments& values)
{
    BackoffConfig config;
    config.initialInterval = ToNumber(values.at(0));
    config.maxInterval = ToNumber(values.at(1));
    config.multiplier = ToNumber(values.at(2));
    config.maxRetries = ToNumber(values.at(3));
    config.jitter = ToNumber(values.at(4));
    return {IdServicesAutomation::SetOverridingConfig(config, IdServicesAutomation::Backoff)};
}

Result SetProduct(const Arguments& values)
{
    ProductConfig product;
    product.SetOAuth2ClientID(values.at(1).c_str());
    product.SetOAuth2TokenScope(values.at(2).c_str());
    product.SetProductLineName("Tests");
    product.SetProductReleaseId("1");
    product.SetProductBuildId("1.0.0");
    return {Manager().SetProductConfig(static_cast<Server>(ToNumber(values.at(0))), product)};
}

Result LogIn(const Arguments&)
{
    int detail = 0;
    const IdErrorCode code = Manager().Login(detail);
    return {code, std::to_string(detail)};
}

Result LogOut(const Arguments&)
{
    int detail = 0;
    return {Manager().Logout(detail, TALIX_LOGOUT_DEFAULT)};
}

Result AccessToken(const Arguments& values)
{
    std::vector<wchar_t> buffer(TextCapacity);
    const bool mayWait = values.empty() || values[0] != "0";
    const IdErrorCode code = Manager().GetOAuth2AccessToken(buffer.data(), TextCapacity, mayWait);
    return {code, ToUtf8(buffer.data())};
}

Result IdToken(const Arguments&)
{
    std::vector<wchar_t> buffer(TextCapacity);
    const IdErrorCode code = Manager().GetOAuth2IdToken(buffer.data(), TextCapacity);
    return {code, ToUtf8(buffer.data())};
}

/// Asks for the access token many times, on several threads. The text says how often each code came, and how many
/// different tokens.
Result ManyTokens(const Arguments& values)
{
    std::mutex mutex;
    std::map<int, int> codes;
    std::map<std::string, int> tokens;
    std::atomic<int> left = ToNumber(values.at(0));
    std::vector<std::thread> threads;
    for (int index = 0; index < ToNumber(values.at(1)); ++index)
    {
        threads.emplace_back([&] {
            while (left.fetch_sub(1) > 0)
            {
                const Result result = AccessToken({});
                const std::lock_guard lock(mutex);
                ++codes[result.code];
                ++tokens[result.text];
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::string text;
    for (const auto& [code, count] : codes)
        text += std::to_string(code) + "=" + std::to_string(count) + " ";
    return {IdSuccess, text + "tokens=" + std::to_string(tokens.size())};
}

/// Nanoseconds of one call, the mean of many.
template <class Call>
Result TimeOf(int count, Call call)
{
    const auto begin = std::chrono::steady_clock::now();
    for (int index = 0; index < count; ++index)
    {
        if (!call())
            return {IdFailed, "a call failed"};
    }
    const auto time = std::chrono::steady_clock::now() - begin;
    return {IdSuccess, std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count() / count)};
}

Result TimeTokens(const Arguments& values)
{
    static char text[TextCapacity];
    talix_buffer token{text, sizeof text};
    // Counts as one more start of the library: the flat functions work only after it.
    if (talix_init() != talix_status_code{IdSuccess})
        return {IdFailed, "the library did not start"};
    const Result result =
        TimeOf(ToNumber(values.at(0)), [&] { return talix_get_token(&token) == talix_status_code{IdSuccess}; });
    talix_deinit();
    return result;
}

// --- The floor of a token request: a bare round trip on a named pipe, to another process
// ------------------------------

bool Transfer(HANDLE pipe, bool isWritten, std::vector<char>& bytes)
{
    for (std::size_t done = 0; done < bytes.size();)
    {
        DWORD size = 0;
        const auto left = static_cast<DWORD>(bytes.size() - done);
        const BOOL isGood = isWritten ? WriteFile(pipe, bytes.data() + done, left, &size, nullptr)
                                      : ReadFile(pipe, bytes.data() + done, left, &size, nullptr);
        if (!isGood || size == 0)
            return false;
        done += size;
    }
    return true;
}

/// The process at the other end. Ends with the connection.
int ServePipe(const std::string& name, int request, int response)
{
    const HANDLE pipe = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 65536, 65536, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE || (!ConnectNamedPipe(pipe, nullptr) && GetLastError() != ERROR_PIPE_CONNECTED))
        return 1;
    std::vector<char> read(request);
    std::vector<char> written(response);
    while (Transfer(pipe, false, read) && Transfer(pipe, true, written))
    {
    }
    return 0;
}

HANDLE ConnectTo(const std::string& name)
{
    for (int attempt = 0; attempt < 1000; ++attempt)
    {
        const HANDLE pipe =
            CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (pipe != INVALID_HANDLE_VALUE)
            return pipe;
        Sleep(10); // The process at the other end is starting.
    }
    return INVALID_HANDLE_VALUE;
}

Result TimePipe(const Arguments& values)
{
    static std::atomic<int> number = 0;
    const std::string name =
        "\\\\.\\pipe\\ProviderHost." + std::to_string(GetCurrentProcessId()) + "." + std::to_string(++number);
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string command = '"' + std::string(program) + "\" --pipe " + name + " " + values.at(1) + " " + values.at(2);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!CreateProcessA(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started))
        return {IdFailed, "no process for the other end"};
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    const HANDLE pipe = ConnectTo(name);
    std::vector<char> request(ToNumber(values.at(1)));
    std::vector<char> response(ToNumber(values.at(2)));
    const Result result = TimeOf(ToNumber(values.at(0)),
                                 [&] { return Transfer(pipe, true, request) && Transfer(pipe, false, response); });
    CloseHandle(pipe);
    return result;
}

// --- More commands
// ----------------------------------------------------------------------------------------------------

Result User(const Arguments&)
{
    char id[1024] = "";
    char name[1024] = "";
    char email[1024] = "";
    talix_user_info info{};
    info.user_id = id;
    info.user_id_size = sizeof id;
    info.display_name = name;
    info.display_name_size = sizeof name;
    info.email = email;
    info.email_size = sizeof email;
    const IdErrorCode code = Manager().GetUserInfo(&info);
    return {code, std::string(id) + "|" + name + "|" + email};
}

Result Profile(const Arguments&)
{
    std::vector<char> buffer(TextCapacity);
    int size = TextCapacity;
    const IdErrorCode code = Manager().GetProfileInfo(buffer.data(), &size);
    return {code, buffer.data()};
}

Result Status(const Arguments&)
{
    const auto flag = [](bool value) { return value ? "1" : "0"; };
    return {IdSuccess, std::string("loggedIn=") + flag(Manager().IsLoggedIn()) + " valid=" +
                           flag(Manager().IsLoginValid()) + " tokenExpired=" + flag(Manager().IsOAuth2TokenExpired())};
}

Result Events(const Arguments&)
{
    while (Manager().HasEvent())
        Manager().DispatchEvent();
    return {IdSuccess, HostObserver().Take()};
}

Result ServerProcess(const Arguments&)
{
    std::int64_t id = 0;
    const bool isRunning = SSOServerManager::IsSSOServerProcessRunning(id);
    return {isRunning ? static_cast<int>(IdSuccess) : static_cast<int>(IdFailed), std::to_string(id)};
}

Result QuitServer(const Arguments&)
{
    return {SSOServerManager::QuitSSOServerProcess(std::chrono::minutes(2)) ? static_cast<int>(IdSuccess)
                                                                            : static_cast<int>(IdFailed)};
}

/// Signs in, and replies once the observer knows: the text is its events.
Result SignIn(const Arguments&)
{
    const Result login = LogIn({});
    return {login.code, Events({}).text};
}

const std::map<std::string, std::function<Result(const Arguments&)>>& Commands()
{
    static const std::map<std::string, std::function<Result(const Arguments&)>> commands = {
        {"start", &Start},
        {"stop", [](const Arguments&) { return Result{IdServicesMgr::Uninitialize()}; }},
        {"backoff", &SetBackoff},
        {"product", &SetProduct},
        {"server",
         [](const Arguments& values) {
             return Result{Manager().SetServer(static_cast<Server>(ToNumber(values.at(0))))};
         }},
        {"login", &LogIn},
        {"signIn", &SignIn},
        {"logout", &LogOut},
        {"token", &AccessToken},
        {"idToken", &IdToken},
        {"manyTokens", &ManyTokens},
        {"timeTokens", &TimeTokens},
        {"timePipe", &TimePipe},
        {"refresh", [](const Arguments&) { return Result{Manager().RefreshOAuth2Token(false)}; }},
        {"user", &User},
        {"profile", &Profile},
        {"status", &Status},
        {"events", &Events},
        {"serverProcess", &ServerProcess},
        {"quitServer", &QuitServer},
    };
    return commands;
}

void Reply(const std::string& number, const Result& result)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::printf("%s\t%d\t%s\n", number.c_str(), result.code, result.text.c_str());
    std::fflush(stdout);
}

void Run(const std::string& number, const std::string& command, const Arguments& arguments)
{
    const auto found = Commands().find(command);
    if (found == Commands().end())
        return Reply(number, {-1, "unknown command"});
    try
    {
        Reply(number, found->second(arguments));
    }
    catch (const std::exception& error)
    {
        Reply(number, {-2, error.what()});
    }
}

/// Threads that run until their work is done. Each detaches itself: mingw-w64's runtime loses a thread, once in some
/// hundred times, if another thread detaches it before it runs.
class ThreadList
{
public:
    void Start(std::function<void()> work)
    {
        const std::lock_guard lock(mutex_);
        threads_.emplace_back();
        const auto own = std::prev(threads_.end());
        *own = std::thread([this, own, work = std::move(work)] {
            work();
            const std::lock_guard inner(mutex_);
            own->detach();
            threads_.erase(own);
        });
    }

private:
    std::mutex mutex_;
    std::list<std::thread> threads_;
};

ThreadList& Threads()
{
    static ThreadList& list = *new ThreadList; // Never destroyed: its threads may outlive main().
    return list;
}

/// Begins the command of a line. False for the last one.
bool Begin(const std::string& line)
{
    Arguments parts;
    std::istringstream stream(line);
    for (std::string part; std::getline(stream, part, '\t');)
        parts.push_back(part);
    if (parts.size() < 2)
        return true;
    if (parts[1] == "exit")
        return false;
    Threads().Start([parts] { Run(parts[0], parts[1], Arguments(parts.begin() + 2, parts.end())); });
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 5 && std::string(argv[1]) == "--pipe")
        return ServePipe(argv[2], ToNumber(argv[3]), ToNumber(argv[4]));
    Reply("0", {IdSuccess, "ready"});
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    std::string pending;
    char block[4096];
    for (DWORD size = 0; ReadFile(input, block, sizeof block, &size, nullptr) && size > 0;)
    {
        pending.append(block, size);
        for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n'))
        {
            if (!Begin(pending.substr(0, end)))
                return 0;
            pending.erase(0, end + 1);
        }
    }
    // The driver is gone. Threads may still be within the library: the process ends as at a crash.
    TerminateProcess(GetCurrentProcess(), 0);
}
