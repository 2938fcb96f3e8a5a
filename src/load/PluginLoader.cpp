#include "load/PluginLoader.h"

#include <algorithm>
#include <vector>

#include "base/Handles.h"
#include "base/Log.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "load/LockedFile.h"
#include "load/PluginInterfaces.h"
#include "load/contract/IPluginLogger.h"
#include "load/contract/ISSOClientFactory.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr wchar_t loggerName[] = L"Orlindex";
constexpr char factorySymbol[] = "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ";
constexpr char factorySymbolWow64[] = "?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ";

/// Empty if none is set, or one that cannot be saved: the platform is told its own path limit on purpose, whatever was
/// allocated, so a directory of 260 characters or more is given up.
std::wstring CurrentDllDirectory()
{
    const DWORD needed = GetDllDirectoryW(0, nullptr); // With the zero.
    if (needed == 0)
        return {};
    std::wstring directory(std::max<std::size_t>(needed + std::size_t{1}, MAX_PATH), L'\0');
    const DWORD length = GetDllDirectoryW(MAX_PATH, directory.data());
    directory.resize(length < MAX_PATH ? length : 0);
    return directory;
}

/// The library search directory, replaced for the length of a scope.
class DllDirectoryScope
{
public:
    explicit DllDirectoryScope(const std::wstring& directory) : saved_(CurrentDllDirectory())
    {
        SetDllDirectoryW(directory.c_str());
    }
    DllDirectoryScope(const DllDirectoryScope&) = delete;
    DllDirectoryScope& operator=(const DllDirectoryScope&) = delete;
    /// If none was set before, an empty text, on purpose not null: null would restore the default order, in which the
    /// current directory is searched, and that may be anyone's choice.
    ~DllDirectoryScope() { SetDllDirectoryW(saved_.c_str()); }

private:
    std::wstring saved_;
};

/// The modules that were verified and loaded in this process. They are never released, so that a handle stands for its
/// module as long as the process lives. Never destroyed: another thread may load while the process ends.
std::vector<HMODULE>& VerifiedModules()
{
    static std::vector<HMODULE>& modules = *new std::vector<HMODULE>;
    return modules;
}

bool IsVerifiedModule(HMODULE module)
{
    const std::vector<HMODULE>& modules = VerifiedModules();
    return std::find(modules.begin(), modules.end(), module) != modules.end();
}

void RememberVerifiedModule(HMODULE module)
{
    if (!IsVerifiedModule(module))
        VerifiedModules().push_back(module);
}

/// The plain load looks for dependencies in the host's directory before the library search directory, and would take
/// one that was planted there. The first load begins with the module's own directory; the plain one then finds the
/// module and its dependencies loaded. What lies beside the host alone is not found by the first (126): then the plain
/// load decides. Any other error is final: a module that fails in its DllMain is not made to run it twice.
ModuleLoad LoadWithOwnDependencies(const std::wstring& path)
{
    const ModuleReference ownFirst(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!ownFirst)
    {
        if (const DWORD error = GetLastError(); error != ERROR_MOD_NOT_FOUND)
            return {nullptr, error};
    }
    const HMODULE module = LoadLibraryW(path.c_str());
    return {module, module ? ERROR_SUCCESS : GetLastError()};
}

bool IsAmbiguous(const std::wstring& configuredPath, const LockedFile& verified)
{
    // A link may have another kind of name than the file that it leads to.
    return FindModulePathDefect(configuredPath) || FindModulePathDefect(verified.Path());
}

} // namespace

DWORD ReasonNotToLoad(const std::wstring& configuredPath, const LockedFile& verified)
{
    return IsAmbiguous(configuredPath, verified) ? ERROR_BAD_PATHNAME : verified.Error();
}

ModuleLoad LoadVerifiedModule(const std::wstring& configuredPath, const LockedFile& verified)
{
    ModuleLoad load;
    {
        // Set and restored even if nothing is loaded: the steps are taken in their order up to the load itself.
        const DllDirectoryScope scope(ParentPath(verified.Path()));
        load.ambiguousPath = IsAmbiguous(configuredPath, verified);
        load.error = ReasonNotToLoad(configuredPath, verified);
        if (load.error == ERROR_SUCCESS)
            load = LoadWithOwnDependencies(verified.Path());
    }
    if (!load.module)
        return load;
    // A module in memory that was verified when it was loaded serves on, even if its file was replaced since. Otherwise
    // what counts is which file was mapped: not every file system keeps the folders above an open file in place.
    if (!IsVerifiedModule(load.module) && !verified.IsSourceOf(load.module))
    {
        FreeLibrary(load.module);
        load = {};
        load.error = ERROR_FILE_INVALID; // The platform gives no error of its own.
        load.fromAnotherFile = true;
        return load;
    }
    RememberVerifiedModule(load.module); // Never released: the plugin's code may run as long as the process does.
    return load;
}

const char* PluginFactoryName()
{
    return IsWow64() ? factorySymbolWow64 : factorySymbol;
}

PluginFactorySymbol FindPluginFactory(HMODULE module)
{
    const FARPROC symbol = GetProcAddress(module, PluginFactoryName());
    // By way of void*: a direct cast between function types draws a warning about their different arguments.
    return {reinterpret_cast<PluginFactoryFunction>(reinterpret_cast<void*>(symbol)),
            symbol ? ERROR_SUCCESS : GetLastError()};
}

PluginLog ConnectPluginLogger(ISSOClientFactory& factory)
{
    PluginLog log;
    log.source = factory.GetLoggerSource();
    if (!log.source)
        return log;
    IPluginLogger* const logger = log.source->GetLogger(loggerName);
    log.logger = logger;
    if (logger)
        SetPluginLogger([logger](const std::wstring& message, LogLevel level) { logger->Log(message.c_str(), level); });
    else
        SetPluginLogger(nullptr);
    FlushPendingLog();
    return log;
}

void ObtainPluginInterfaces(ISSOClientFactory& factory)
{
    PluginInterfaces& interfaces = pluginInterfaces;
    if (!interfaces.ssoClientModule)
        interfaces.ssoClientModule = factory.GetSSOClientModule();
    if (!interfaces.ssoServerManager)
        interfaces.ssoServerManager = factory.GetSSOServerManager();
    if (!interfaces.ssoClient)
        interfaces.ssoClient = factory.GetSSOClient();
    if (!interfaces.ssoClientPrivate)
        interfaces.ssoClientPrivate = factory.GetSSOClientPrivate();
}

} // namespace Kestrany::IdentityServices
