#include "load/PluginModule.h"

#include <algorithm>
#include <vector>

#include "base/Paths.h"
#include "base/Wow64.h"

namespace Kestrany::IdentityServices {
namespace {

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

/// One reference to a loaded module, released at the end of a scope.
class ModuleReference
{
public:
    explicit ModuleReference(HMODULE module) : module_(module) {}
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
    ~ModuleReference()
    {
        if (module_)
            FreeLibrary(module_);
    }

    explicit operator bool() const { return module_ != nullptr; }

private:
    HMODULE module_;
};

/// Never destroyed: another thread may load while the process ends.
std::vector<HMODULE>& VerifiedModules()
{
    static std::vector<HMODULE>& modules = *new std::vector<HMODULE>;
    return modules;
}

} // namespace

ModuleLoad LoadModuleWithOwnDirectory(const std::wstring& path, DWORD refusal)
{
    const DllDirectoryScope scope(ParentPath(path));
    if (refusal != ERROR_SUCCESS)
        return {nullptr, refusal};
    // The plain load looks for dependencies in the host's directory before the library search directory, and would take
    // one that was planted there. This load begins with the module's own directory; the plain one then finds the module
    // and its dependencies loaded. What lies beside the host alone is not found this way (126): there the plain load
    // decides. Any other error is final: a module that fails in its DllMain is not made to run it twice.
    const ModuleReference ownFirst(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!ownFirst)
    {
        if (const DWORD error = GetLastError(); error != ERROR_MOD_NOT_FOUND)
            return {nullptr, error};
    }
    const HMODULE module = LoadLibraryW(path.c_str());
    return {module, module ? ERROR_SUCCESS : GetLastError()};
}

void RememberVerifiedModule(HMODULE module)
{
    if (!IsVerifiedModule(module))
        VerifiedModules().push_back(module);
}

bool IsVerifiedModule(HMODULE module)
{
    const std::vector<HMODULE>& modules = VerifiedModules();
    return std::find(modules.begin(), modules.end(), module) != modules.end();
}

const char* PluginFactorySymbol()
{
    return IsWow64() ? factorySymbolWow64 : factorySymbol;
}

PluginFactoryFunction FindPluginFactory(HMODULE module, DWORD& error)
{
    const FARPROC symbol = GetProcAddress(module, PluginFactorySymbol());
    error = symbol ? ERROR_SUCCESS : GetLastError();
    // By way of void*: a direct cast between function types draws a warning about their different arguments.
    return reinterpret_cast<PluginFactoryFunction>(reinterpret_cast<void*>(symbol));
}

} // namespace Kestrany::IdentityServices
