#include "Environment.h"

#include <filesystem>
#include <stdexcept>

#include <windows.h>

#include "load/contract/ISSOServerManager.h"
#include "platform/Folders.h"
#include "server/ServerProcesses.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

using FactoryFunction = IdentityServices::ISSOClientFactory* (*)();

constexpr char FactorySymbol[] = "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ";

/// The tests lie in the build tree's bin folder. Some runs are about the agent of another build.
std::wstring AgentFolder()
{
    wchar_t other[MAX_PATH];
    if (GetEnvironmentVariableW(L"ORLINDEX_TEST_OTHER_AGENT", other, MAX_PATH) != 0)
        return std::filesystem::absolute(other).native() + L'\\';
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring folder = std::wstring(path, length).substr(0, std::wstring(path, length).rfind(L'\\'));
    return folder.substr(0, folder.rfind(L'\\')) + L"\\agent\\";
}

FactoryFunction FindFactory()
{
    const HMODULE module = LoadLibraryW((AgentFolder() + L"unsigned\\PellwickClient.dll").c_str());
    const FARPROC address = module == nullptr ? nullptr : GetProcAddress(module, FactorySymbol);
    if (address == nullptr)
        throw std::runtime_error("PellwickClient.dll cannot be loaded: error " + std::to_string(GetLastError()));
    return reinterpret_cast<FactoryFunction>(reinterpret_cast<void*>(address));
}

void ConfigureServer(IdentityServices::ISSOServerManager& servers)
{
    const std::wstring file = ServerFile();
    servers.ConfigureServerApp(file.substr(0, file.rfind(L'\\')).c_str(), file.c_str());
}

IdentityServices::ISSOClientFactory& LoadPlugin()
{
    IdentityServices::ISSOClientFactory& factory = *FindFactory()();
    ConfigureServer(*factory.GetSSOServerManager());
    return factory;
}

std::string OwnPrefix()
{
    return "Tests." + std::to_string(GetCurrentProcessId()) + ".";
}

} // namespace

std::wstring ServerFile()
{
    return AgentFolder() + L"Pellwick.exe";
}

IdentityServices::ISSOClientFactory& PluginFactory()
{
    static IdentityServices::ISSOClientFactory& factory = LoadPlugin();
    return factory;
}

void ConfigureServer(const std::string& identity)
{
    IdentityServices::ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
    ConfigureServer(servers);
    servers.SetProcessIdentityName(identity.c_str());
}

std::string OwnIdentity(const std::string& purpose)
{
    return OwnPrefix() + purpose;
}

void UseOwnFolder()
{
    wchar_t folder[MAX_PATH];
    const DWORD length = GetTempPathW(MAX_PATH, folder);
    const std::string prefix = OwnPrefix();
    const std::wstring own = std::wstring(folder, length) + std::wstring(prefix.begin(), prefix.end()) + L"Data";
    if (length == 0 || !SetEnvironmentVariableW(SettingsFolderVariable, own.c_str()))
        throw std::runtime_error("no folder for the tests");
}

void CleanUp()
{
    const ServerProcesses processes([](TALIXLog::LogLevel, const std::string&) {});
    const std::wstring file = ServerFile();
    constexpr std::int64_t limit = OrlindexTest::PatienceMilliseconds;
    processes.QuitAll(file.substr(file.rfind(L'\\') + 1), limit);
    std::error_code ignored; // The prefix is deleted afterwards.
    std::filesystem::remove_all(SettingsFolder(), ignored);
}

} // namespace Kestrany::Agent
