#include "load/PluginModule.h"

#include <algorithm>
#include <optional>

#include "base/Paths.h"
#include "base/Wow64.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr char factorySymbol[] = "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ";
constexpr char factorySymbolWow64[] = "?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ";

/// Nothing where one is set that cannot be read: the platform is told its own path limit. An empty text where none is
/// set.
std::optional<std::wstring> CurrentDllDirectory()
{
    const DWORD needed = GetDllDirectoryW(0, nullptr); // With the zero.
    if (needed <= 1)
        return std::wstring();
    std::wstring directory(std::max<std::size_t>(needed + std::size_t{1}, MAX_PATH), L'\0');
    const DWORD length = GetDllDirectoryW(MAX_PATH, directory.data());
    if (length == 0 || length >= MAX_PATH)
        return std::nullopt;
    directory.resize(length);
    return directory;
}

/// The library search directory, replaced for the length of a scope. One that could not be put back stays: the module's
/// own directory is searched without it too.
class DllDirectoryScope
{
public:
    explicit DllDirectoryScope(const std::wstring& directory) : saved_(CurrentDllDirectory())
    {
        if (saved_)
            SetDllDirectoryW(directory.c_str());
    }
    DllDirectoryScope(const DllDirectoryScope&) = delete;
    DllDirectoryScope& operator=(const DllDirectoryScope&) = delete;
    /// Where none was set before, an empty text, not null: it keeps the current directory out of the search order.
    ~DllDirectoryScope()
    {
        if (saved_)
            SetDllDirectoryW(saved_->c_str());
    }

private:
    std::optional<std::wstring> saved_;
};

/// One reference to a loaded module, given back at the end of a scope.
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

} // namespace

HMODULE LoadModuleWithOwnDirectory(const std::wstring& path, DWORD& error)
{
    const DllDirectoryScope scope(ParentPath(path));
    // The plain load looks for dependencies in the host's directory before the library search directory, and would take
    // one that was planted there. This load begins with the module's own directory; the plain one then finds the module
    // and its dependencies loaded. What lies beside the host alone is left to the plain load.
    const ModuleReference ownFirst(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    error = ownFirst ? ERROR_SUCCESS : GetLastError();
    if (error != ERROR_SUCCESS && error != ERROR_MOD_NOT_FOUND)
        return nullptr;
    const HMODULE module = LoadLibraryW(path.c_str());
    error = module ? ERROR_SUCCESS : GetLastError();
    return module;
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
