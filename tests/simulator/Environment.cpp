#include "Environment.h"

#include <stdexcept>

#include <windows.h>

#include "load/contract/ISSOServerManager.h"
#include "platform/Folders.h"

namespace Kestrany::Simulator {

namespace {

using FactoryFunction = IdentityServices::ISSOClientFactory* (*)();

constexpr char FactorySymbol[] = "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ";

/// The tests lie in the build tree's bin folder.
std::wstring SimulatorFolder()
{
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring folder = std::wstring(path, length).substr(0, std::wstring(path, length).rfind(L'\\'));
    return folder.substr(0, folder.rfind(L'\\')) + L"\\simulator\\";
}

FactoryFunction FindFactory()
{
    const HMODULE module = LoadLibraryW((SimulatorFolder() + L"unsigned\\PellwickClient.dll").c_str());
    const FARPROC address = module == nullptr ? nullptr : GetProcAddress(module, FactorySymbol);
    if (address == nullptr)
        throw std::runtime_error("PellwickClient.dll cannot be loaded: error " + std::to_string(GetLastError()));
    return reinterpret_cast<FactoryFunction>(reinterpret_cast<void*>(address));
}

IdentityServices::ISSOClientFactory& LoadPlugin()
{
    IdentityServices::ISSOClientFactory& factory = *FindFactory()();
    // Tests run side by side, and hosts of one server share the user's login.
    factory.GetSSOServerManager()->SetServerIdentityName(OwnIdentity("Server").c_str());
    return factory;
}

std::string OwnPrefix()
{
    return "Tests." + std::to_string(GetCurrentProcessId()) + ".";
}

} // namespace

std::wstring ServerFile()
{
    return SimulatorFolder() + L"Pellwick.exe";
}

IdentityServices::ISSOClientFactory& PluginFactory()
{
    static IdentityServices::ISSOClientFactory& factory = LoadPlugin();
    return factory;
}

void ConfigureServer(const std::string& identity)
{
    IdentityServices::ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
    const std::wstring file = ServerFile();
    servers.ConfigureServerApp(file.substr(0, file.rfind(L'\\')).c_str(), file.c_str());
    servers.SetProcessIdentityName(identity.c_str());
}

std::string OwnIdentity(const std::string& purpose)
{
    return OwnPrefix() + purpose;
}

void RemoveOwnFiles()
{
    const std::string prefix = OwnPrefix();
    const std::wstring folder = DataFolder() + L"\\Simulator\\";
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((folder + std::wstring(prefix.begin(), prefix.end()) + L"*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do
        DeleteFileW((folder + entry.cFileName).c_str());
    while (FindNextFileW(search, &entry));
    FindClose(search);
}

} // namespace Kestrany::Simulator
