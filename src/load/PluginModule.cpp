#include "load/PluginModule.h"

#include <algorithm>

#include "base/Paths.h"
#include "base/Wow64.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr char factorySymbol[] = "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ";
constexpr char factorySymbolWow64[] = "?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ";

std::wstring CurrentDllDirectory()
{
    const DWORD needed = GetDllDirectoryW(0, nullptr);
    if (needed == 0)
        return {};
    // The platform is told its own path limit, so the buffer has at least that.
    std::wstring directory(std::max<std::size_t>(needed + std::size_t{1}, MAX_PATH), L'\0');
    GetDllDirectoryW(MAX_PATH, directory.data());
    directory.resize(directory.find(L'\0'));
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
    /// Where none was set before, an empty text, not null: it keeps the current directory out of the search order.
    ~DllDirectoryScope() { SetDllDirectoryW(saved_.c_str()); }

private:
    std::wstring saved_;
};

} // namespace

HMODULE LoadModuleWithOwnDirectory(const std::wstring& path, DWORD& error)
{
    const DllDirectoryScope scope(ParentPath(path));
    const HMODULE module = LoadLibraryW(path.c_str());
    error = module ? ERROR_SUCCESS : GetLastError();
    return module;
}

PluginFactoryFunction FindPluginFactory(HMODULE module, DWORD& error)
{
    const FARPROC symbol = GetProcAddress(module, IsWow64() ? factorySymbolWow64 : factorySymbol);
    error = symbol ? ERROR_SUCCESS : GetLastError();
    // By way of void*: a direct cast between function types draws a warning about their different arguments.
    return reinterpret_cast<PluginFactoryFunction>(reinterpret_cast<void*>(symbol));
}

} // namespace Kestrany::IdentityServices
