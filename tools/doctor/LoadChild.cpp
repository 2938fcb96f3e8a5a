#include "LoadProcess.h"

#include <cstdint>
#include <windows.h>

#include "LoadMessages.h"
#include "base/Log.h"
#include "base/Paths.h"
#include "base/Product.h"
#include "base/Text.h"
#include "locate/SSOPathResolver.h"

namespace Orlindex::Doctor {

using namespace Kestrany::IdentityServices;

namespace {

class MessagePipe
{
public:
    explicit MessagePipe(HANDLE handle) : handle_(handle) {}

    void Send(const LoadMessage& message) const
    {
        const std::string line = LineOf(message) + '\n';
        DWORD written = 0;
        WriteFile(handle_, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    }

private:
    HANDLE handle_;
};

class LoadReporter final : public StartUpObserver
{
public:
    explicit LoadReporter(const MessagePipe& pipe) : pipe_(pipe) {}

    void OnLoadStep(const LoadFinding& finding) override
    {
        pipe_.Send({LoadMessage::Kind::Step, static_cast<unsigned long>(finding.step), finding.state, finding.error});
    }

    void OnPluginObject(PluginObject object, bool present) override
    {
        pipe_.Send(
            {LoadMessage::Kind::Object, static_cast<unsigned long>(object), LoadState::Done, present ? 1UL : 0UL});
    }

    void OnException(const std::wstring& reason) override
    {
        pipe_.Send({LoadMessage::Kind::Exception, 0, LoadState::Failed, 0, Narrow(reason)});
    }

private:
    const MessagePipe& pipe_;
};

/// Every host has the library in its process, and a plugin may call its functions.
DWORD LoadHostLibrary(const std::wstring& host)
{
    const std::wstring library = JoinPath(host, ProductModuleName);
    return LoadLibraryExW(library.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) ? ERROR_SUCCESS : GetLastError();
}

} // namespace

int RunLoadChild(const std::vector<std::wstring>& arguments)
{
    if (arguments.size() < 2)
        return 1;
    // Nobody can close a message box of this process.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    const auto number = static_cast<std::uintptr_t>(std::wcstoull(arguments[0].c_str(), nullptr, 10));
    auto* const handle = reinterpret_cast<HANDLE>(number); // NOLINT(performance-no-int-to-ptr): as the parent wrote it
    const MessagePipe pipe(handle);
    // Processes that the plugin starts must not keep the pipe open.
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);

    const std::wstring& host = arguments[1];
    pipe.Send({LoadMessage::Kind::Library, 0, LoadState::Begun});
    const DWORD error = LoadHostLibrary(host);
    pipe.Send({LoadMessage::Kind::Library, 0, error == ERROR_SUCCESS ? LoadState::Done : LoadState::Failed, error});
    LoadReporter reporter(pipe);
    StartUpOverrides overrides = {host, host, {}, {}, &reporter};
    if (arguments.size() > 2)
        overrides.clientPluginModule = arguments[2];
    SSOPathResolver manager(SplitVersion(ProductVersion), DefaultLogFunction, overrides);
    pipe.Send({LoadMessage::Kind::End, manager.EnsureClientLoaded() ? 1UL : 0UL});
    // Skip the DllMain calls of a normal exit: a plugin may have threads that outlive its module.
    TerminateProcess(GetCurrentProcess(), 0);
    return 0;
}

} // namespace Orlindex::Doctor
