#include "base/MessageFormat.h"
#include "base/Paths.h"
#include "base/TextConversion.h"
#include "locate/FileSearch.h"
#include "locate/RegistryKey.h"
#include "locate/RegistryLocation.h"
#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr wchar_t keyBelowLocalMachine[] = L"SOFTWARE\\Kestrany\\Pellwick";
constexpr DWORD locationByteLimit = 1024; ///< A longer one counts as missing. Not that of the versioned keys.

void TellKey(StartObserver& observer, const RegistryKey& key, LSTATUS read, const std::optional<std::wstring>& location)
{
    const std::optional<LSTATUS> valueRead = key.IsOpen() ? std::optional(read) : std::nullopt;
    observer.OnRegistryKey({ServerApplicationKey, key.Status(), valueRead, location.value_or(std::wstring())});
    if (location)
        observer.OnRegistryChoice(ServerApplicationKey, *location);
}

/// Sets a flag for the length of a scope.
class FlagScope
{
public:
    explicit FlagScope(bool& flag) : flag_(flag) { flag_ = true; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;
    ~FlagScope() { flag_ = false; }

private:
    bool& flag_;
};

} // namespace

bool SSOPathResolver::FindSSOServerApp()
{
    if (!ssoServerAppPath_.empty())
        return true;
    if (findingServerApp_)
        return false; // A search directory that refers to the server application's own directory has no value yet.
    const FlagScope finding(findingServerApp_);

    if (clientConfigLoadState_ == NotLoaded)
        LoadClientConfig();
    const SearchList directories = ServerAppSearchList();
    const std::wstring lines = DirectoryLines(directories);
    const std::wstring& name = serverSettings_.searchName;
    Log(Message(L"Searching for SSO server app %1% in the following paths:\n%2%", name, lines), TALIXLog::Info);
    if (name.empty())
        return false;

    std::wstring found;
    if (!Search(StartFile::ServerApplication, name, directories, found))
    {
        Log(Message(L"Failed to find SSO server app %1% in the following paths:\n%2%", name, lines), TALIXLog::Error);
        return false;
    }
    ssoServerAppPath_ = ParentPath(found);
    Log(Message(L"Found SSO server app at %1%", GetSSOServerAppExeFile()), TALIXLog::Info);
    return true;
}

/// The order is the rule of priority: the library's own directory, the host's, the client config file's; the registry's
/// comes last, or first where local and admin installations may both serve.
SearchList SSOPathResolver::ServerAppSearchList()
{
    SearchList directories = {{L"%SSOServicesModulePath%", DirectoryOrigin::Library},
                              {L"%ExePath%", DirectoryOrigin::Host}};
    for (const std::wstring& directory : serverSettings_.searchPaths)
        directories.push_back({directory, DirectoryOrigin::ClientConfig});
    AddRegistryLocation(directories);
    ExpandSearchList(directories);
    return directories;
}

void SSOPathResolver::AddRegistryLocation(SearchList& searchList)
{
    std::string version;
    std::string location;
    if (!GetLatestRegistryLocation(ServerApplicationKey, version, location, observer_))
    {
        AddUnversionedRegistryLocation(searchList);
        return;
    }
    const std::wstring directory = Widen(location);
    Log(Message(L"Getting latest Pellwick path from registry: %1%", directory), TALIXLog::Info);
    searchList.insert(serverSettings_.supportBothLocalAndAdmin ? searchList.begin() : searchList.end(),
                      {directory, DirectoryOrigin::Registry});
}

void SSOPathResolver::AddUnversionedRegistryLocation(SearchList& searchList)
{
    const RegistryKey key(HKEY_LOCAL_MACHINE, keyBelowLocalMachine, KEY_READ);
    LSTATUS read = ERROR_SUCCESS;
    const auto directory = key.IsOpen() ? key.ReadText(LocationValueName, locationByteLimit, &read) : std::nullopt;
    if (observer_)
        TellKey(*observer_, key, read, directory);
    if (!key.IsOpen())
    {
        Log(Message(L"Unable to get Pellwick path from registry, failed with error: %1%", key.Status()),
            TALIXLog::Info);
        return;
    }
    if (directory)
    {
        // Last even where local and admin installations may both serve: only a versioned location comes first.
        searchList.push_back({*directory, DirectoryOrigin::Registry});
        Log(Message(L"Getting Pellwick path from registry: %1%", *directory), TALIXLog::Info);
    }
}

std::wstring SSOPathResolver::GetSSOServerAppPath()
{
    if (ssoServerAppPath_.empty())
        FindSSOServerApp();
    return ssoServerAppPath_;
}

std::wstring SSOPathResolver::GetSSOServerAppExeDirPath()
{
    // On purpose the same value under two names, as the variables have.
    return GetSSOServerAppPath();
}

std::wstring SSOPathResolver::GetSSOServerAppExeFile()
{
    const std::wstring directory = GetSSOServerAppPath();
    return directory.empty() ? std::wstring() : JoinPath(directory, serverSettings_.executableName);
}

} // namespace Kestrany::IdentityServices
