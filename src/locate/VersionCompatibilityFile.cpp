#include <algorithm>
#include <utility>

#include "base/MessageFormat.h"
#include "base/Paths.h"
#include "base/TextConversion.h"
#include "load/VersionCompatibility.h"
#include "locate/FileSearch.h"
#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr char clientPluginKey[] = "ssoClientPlugin";

std::wstring NormalizedModulePath(std::wstring path)
{
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return NormalizePath(path);
}

} // namespace

bool SSOPathResolver::FindCompatibleClientPlugin()
{
    if (!clientPluginModulePath_.empty())
        return true;
    LocateVersionCompatibilityFile();
    const std::wstring version = Widen(JoinVersion(sdkVersion_));
    const std::wstring& file = versionCompatibilityFilePath_;
    Log(Message(
            L"Searching for compatible client plugin version for Orlindex version %1% in version compatibility file "
            L"%2%",
            version, file),
        TALIXLog::Info);

    const VersionCompatibilityContext context = {
        VersionCompatibilityFileExists(), [this](std::wstring& text) { ExpandPathVariables(text); },
        [this](std::wstring message, LogLevel level) { Log(std::move(message), level); }, observer_};
    VersionCompatibilityEntry entry;
    if (ReadVersionCompatibility(file, clientPluginKey, sdkVersion_, context, entry))
    {
        clientPluginModulePath_ = NormalizedModulePath(entry.modulePath);
        // On purpose the module's path, not the file's: that is how the message is meant.
        Log(Message(L"Found compatible client plugin for Orlindex version %1% in version compatibility file: %2%",
                    version, clientPluginModulePath_),
            TALIXLog::Info);
        return true;
    }
    Log(Message(VersionCompatibilityFileExists()
                    ? L"Failed to find compatible client plugin version for Orlindex version %1% in version "
                      L"compatibility file %2%"
                    : L"Failed to find compatible client plugin version for Orlindex version %1% since "
                      L"version compatibility file %2% is not found",
                version, file),
        TALIXLog::Error);
    return false;
}

void SSOPathResolver::LocateVersionCompatibilityFile()
{
    if (!versionCompatibilityFilePath_.empty())
        return;
    if (!versionCompatibilityFileOverride_.empty())
    {
        const std::wstring& path = versionCompatibilityFileOverride_;
        if (!PathExists(path))
        {
            Log(Message(L"Failed to find version compatibility file override %1%", path), TALIXLog::Error);
            return;
        }
        Log(Message(L"Found version compatibility file override at %1%", path), TALIXLog::Info);
        versionCompatibilityFilePath_ = path;
        return;
    }

    SearchList directories = {{L"%SSOServerAppPath%", DirectoryOrigin::ServerApplication}};
    if (SearchVersionCompatibilityFile(directories))
        return;
    directories.clear();
    if (!serverSettings_.versionCompatibilityConfigFilePath.empty())
        directories.push_back({serverSettings_.versionCompatibilityConfigFilePath, DirectoryOrigin::ClientConfig});
    if (SearchVersionCompatibilityFile(directories))
        return;
    versionCompatibilityFilePath_ = VersionCompatibilityFileName;
    versionCompatibilityFileNotFound_ = true;
    // On purpose the directories of the second search alone: the first search named its own.
    Log(Message(L"Failed to find version compatibility file %1% in the following paths:\n%2%",
                VersionCompatibilityFileName, DirectoryLines(directories)),
        TALIXLog::Error);
}

/// The bare file name that a failed search leaves behind never exists: the current directory, where it would be looked
/// up, may be anyone's choice. An override of that name is a file like any other.
bool SSOPathResolver::VersionCompatibilityFileExists() const
{
    return !versionCompatibilityFileNotFound_ && PathExists(versionCompatibilityFilePath_);
}

bool SSOPathResolver::SearchVersionCompatibilityFile(SearchList& directories)
{
    ExpandSearchList(directories);
    Log(Message(L"Searching for version compatibility file %1% in the following paths:\n%2%",
                VersionCompatibilityFileName, DirectoryLines(directories)),
        TALIXLog::Info);
    if (!Search(StartFile::VersionCompatibility, VersionCompatibilityFileName, directories,
                versionCompatibilityFilePath_))
        return false;
    Log(Message(L"Found version compatibility file at %1%", versionCompatibilityFilePath_), TALIXLog::Info);
    return true;
}

void SSOPathResolver::SetVersionCompatibilityFileOverride(std::wstring path)
{
    versionCompatibilityFileOverride_ = std::move(path);
}

} // namespace Kestrany::IdentityServices
