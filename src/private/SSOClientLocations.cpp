// What SSOClientPrivate answers without the plugin: where things lie on the machine.

#include <utility>
#include <windows.h>

#include <knownfolders.h>

#include "base/Platform.h"
#include "base/ProcessLock.h"
#include "locate/SSOPathResolver.h"
#include "orlindex/SSOClientPrivate.h"

namespace Kestrany::IdentityServices {
namespace {

/// The slash stays, on purpose: the text is fixed.
constexpr const wchar_t* logFileElements[] = {L"Kestrany/Identity Services", L"Log", L"IdServices.log"};

void AppendPathElement(std::wstring& path, const wchar_t* element)
{
    if (!path.empty() && path.back() != L'\\' && path.back() != L'/')
        path += L'\\';
    path += element;
}

} // namespace

std::wstring SSOClientPrivate::GetSSOServerAppPath()
{
    return SSOPathResolver::GetInstance()->GetSSOServerAppPath();
}

std::wstring SSOClientPrivate::GetSSOServerAppExeDirPath()
{
    return SSOPathResolver::GetInstance()->GetSSOServerAppExeDirPath();
}

std::wstring SSOClientPrivate::GetSSOClientPluginModule()
{
    SSOPathResolver* manager = SSOPathResolver::GetInstance();
    if (manager->ClientPluginModulePath().empty())
        manager->FindCompatibleClientPlugin();
    return manager->ClientPluginModulePath();
}

bool SSOClientPrivate::ExpandPathVariables(std::wstring& text)
{
    const ProcessLockGuard guard(processLock);
    return SSOPathResolver::GetInstance()->ExpandPathVariables(text) > 0;
}

std::wstring SSOClientPrivate::GetModuleDirPath(const std::wstring& module)
{
    const ProcessLockGuard guard(processLock);
    return IdentityServices::GetModuleDirPath(module);
}

std::wstring SSOClientPrivate::GetSSOClientConfigFile()
{
    SSOPathResolver* manager = SSOPathResolver::GetInstance();
    if (manager->ClientConfigFilePath().empty())
        manager->FindClientConfigFile();
    return manager->ClientConfigFilePath();
}

std::wstring SSOClientPrivate::GetSSOClientConfigFileOverride()
{
    return SSOPathResolver::GetInstance()->ClientConfigFileOverride();
}

void SSOClientPrivate::SetSSOClientConfigFileOverride(std::wstring path)
{
    SSOPathResolver::GetInstance()->SetClientConfigFileOverride(std::move(path));
}

std::wstring SSOClientPrivate::GetLogFile()
{
    std::wstring file = GetKnownFolderPath(FOLDERID_LocalAppData);
    for (const wchar_t* element : logFileElements)
        AppendPathElement(file, element);
    return file;
}

} // namespace Kestrany::IdentityServices
