#include "identity/LoginFile.h"

#include "identity/LoginService.h"
#include "platform/Base.h"
#include "platform/Folders.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

std::wstring LoginFile(const std::string& identity, Server server)
{
    const std::wstring& folder = SettingsFolder();
    const std::string name = ServerName(server);
    if (folder.empty() || name.empty() || !IsValidIdentity(identity))
        return {};
    return folder + L"\\" + Widen(identity) + L"." + Widen(name) + L".login";
}

std::wstring LoginLockFile(const std::string& identity)
{
    const std::wstring& folder = SettingsFolder();
    return folder.empty() || !IsValidIdentity(identity) ? std::wstring() : folder + L"\\" + Widen(identity) + L".lock";
}

} // namespace Kestrany::Agent
