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

/// The DLL search directory; empty if none is set. Always passes MAX_PATH as the buffer size, on purpose, whatever was
/// allocated: a directory of 260 characters or more is not saved.
std::wstring CurrentDllDirectory()
{
    const DWORD needed = GetDllDirectoryW(0, nullptr); // Including the terminating zero.
    if (needed == 0)
        return {};
    std::wstring directory(std::max<std::size_t>(needed + std::size_t{1}, MAX_PATH), L'\0');
    const DWORD length = GetDllDirectoryW(MAX_PATH, directory.data());
    directory.resize(length < MAX_PATH ? length : 0);
    return directory;
}

/// Replaces the DLL search directory for the lifetime of the object.
class DllDirectoryScope
{
public:
    explicit DllDirectoryScope(const std::wstring& directory) : saved_(CurrentDllDirectory())
    {
        SetDllDirectoryW(directory.c_str());
    }
    DllDirectoryScope(const DllDirectoryScope&) = delete;
    DllDirectoryScope& operator=(const DllDirectoryScope&) = delete;
    /// If none was set before, sets an empty text, on purpose not null: null would restore the default order, which
    /// searches the current directory, and anyone may choose that.
    ~DllDirectoryScope() { SetDllDirectoryW(saved_.c_str()); }

private:
    std::wstring saved_;
};

/// The modules that were verified and loaded in this process. They are never released, so each handle stays valid until
/// the process ends. The list is never destroyed: another thread may load a module while the process ends.
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

/// LoadLibrary searches the host's directory for dependencies before the DLL search directory, and would load a file
/// planted there. So the first load, with LOAD_WITH_ALTERED_SEARCH_PATH, begins with the module's own directory; the
/// second one then finds the module and its dependencies already loaded. The first load does not find a dependency that
/// is only beside the host (error 126): then the second load decides. Any other error is final: a module whose DllMain
/// failed must not run it twice.
ModuleLoad LoadWithOwnDependencies(const std::wstring& path)
{
    const ModuleReference ownDirectoryFirst(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!ownDirectoryFirst)
    {
        if (const DWORD error = GetLastError(); error != ERROR_MOD_NOT_FOUND)
            return {nullptr, error};
    }
    const HMODULE module = LoadLibraryW(path.c_str());
    return {module, module ? ERROR_SUCCESS : GetLastError()};
}

bool IsAmbiguous(const std::wstring& configuredPath, const LockedFile& verified)
{
    // A link's name may have a defect that its target's name lacks, and the reverse.
    return FindModulePathDefect(configuredPath) || FindModulePathDefect(verified.Path());
}

template <class Interface>
void ObtainMissing(Interface*& stored, ISSOClientFactory& factory, Interface* (ISSOClientFactory::*get)())
{
    // not covered: Interfaces are stored only with the factory, and then this is not called again.
    if (!stored)
        stored = (factory.*get)();
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
        // Set and restored even if nothing is loaded: all steps up to the load itself run in their fixed order.
        const DllDirectoryScope scope(ParentPath(verified.Path()));
        load.ambiguousPath = IsAmbiguous(configuredPath, verified);
        load.error = ReasonNotToLoad(configuredPath, verified);
        if (load.error == ERROR_SUCCESS)
            load = LoadWithOwnDependencies(verified.Path());
    }
    if (!load.module)
        return load;
    // A module in memory that was verified when it was loaded stays accepted, even if its file was replaced since. For
    // any other module, the mapped file decides: some file systems let the folders above an open file change.
    if (!IsVerifiedModule(load.module) && !verified.IsSourceOf(load.module))
    {
        FreeLibrary(load.module);
        load = {};
        load.error = ERROR_FILE_INVALID; // The platform reports no error.
        load.fromAnotherFile = true;
        return load;
    }
    RememberVerifiedModule(load.module); // Never released: the plugin's code may run until the process ends.
    return load;
}

const char* PluginFactoryName()
{
    return IsWow64() ? factorySymbolWow64 : factorySymbol;
}

PluginFactorySymbol FindPluginFactory(HMODULE module)
{
    const FARPROC symbol = GetProcAddress(module, PluginFactoryName());
    // Cast through void*: a direct cast between function types causes a warning about their different parameters.
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
    ObtainMissing(pluginInterfaces.ssoClientModule, factory, &ISSOClientFactory::GetSSOClientModule);
    ObtainMissing(pluginInterfaces.ssoServerManager, factory, &ISSOClientFactory::GetSSOServerManager);
    ObtainMissing(pluginInterfaces.ssoClient, factory, &ISSOClientFactory::GetSSOClient);
    ObtainMissing(pluginInterfaces.ssoClientPrivate, factory, &ISSOClientFactory::GetSSOClientPrivate);
}

} // namespace Kestrany::IdentityServices
