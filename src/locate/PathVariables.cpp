#include <boost/algorithm/string/predicate.hpp>
#include <locale>
#include <windows.h>

#include <knownfolders.h>

#include "base/ProductIdentity.h"
#include "locate/PlatformFolders.h"
#include "locate/ReferenceExpansion.h"
#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

struct PathVariable
{
    const wchar_t* name;
    std::wstring (*value)(SSOPathResolver& manager);
};

/// The first row whose name matches wins. The first four are the manager's and resolved on first use.
const PathVariable pathVariables[] = {
    {L"SSOServerAppPath", [](SSOPathResolver& manager) { return manager.GetSSOServerAppPath(); }},
    {L"SSOServerAppExeDirPath", [](SSOPathResolver& manager) { return manager.GetSSOServerAppExeDirPath(); }},
    {L"SSOServerAppExeFile", [](SSOPathResolver& manager) { return manager.GetSSOServerAppExeFile(); }},
    {L"SSOServicesModulePath", [](SSOPathResolver& manager) { return manager.LibraryDirectory(); }},
    {L"ProgramFiles", [](SSOPathResolver&) { return GetKnownFolderPath(FOLDERID_ProgramFiles); }},
    {L"ExePath", [](SSOPathResolver& manager) { return manager.ExeDirectory(); }},
    {L"AppPath", [](SSOPathResolver& manager) { return manager.ExeDirectory(); }},
    {L"AppData", [](SSOPathResolver&) { return GetKnownFolderPath(FOLDERID_RoamingAppData); }},
    {L"LocalAppData", [](SSOPathResolver&) { return GetKnownFolderPath(FOLDERID_LocalAppData); }},
};

VariableLookup LookupIn(SSOPathResolver& manager)
{
    return
        [&manager](const std::wstring& name, std::wstring& value) { return manager.GetPathVariableValue(name, value); };
}

} // namespace

bool SSOPathResolver::GetPathVariableValue(const std::wstring& name, std::wstring& value)
{
    value.clear();
    for (const PathVariable& variable : pathVariables)
    {
        if (boost::algorithm::iequals(name, variable.name, std::locale::classic()))
        {
            value = variable.value(*this);
            break;
        }
    }
    return !value.empty();
}

std::int32_t SSOPathResolver::ExpandPathVariables(std::wstring& text)
{
    return IdentityServices::ExpandPathVariables(text, LookupIn(*this));
}

std::wstring SSOPathResolver::ExeDirectory() const
{
    return surroundings_.exeDirectory.empty() ? GetExeDirPath() : surroundings_.exeDirectory;
}

std::wstring SSOPathResolver::LibraryDirectory() const
{
    return surroundings_.libraryDirectory.empty() ? GetModuleDirPath(ProductModuleName)
                                                  : surroundings_.libraryDirectory;
}

void SSOPathResolver::ExpandSearchList(SearchList& directories)
{
    for (SearchDirectory& directory : directories)
        ExpandPathVariables(directory.path);
}

void SSOPathResolver::ExpandPathVariables(std::vector<std::wstring>& texts)
{
    IdentityServices::ExpandPathVariables(texts, LookupIn(*this));
}

} // namespace Kestrany::IdentityServices
