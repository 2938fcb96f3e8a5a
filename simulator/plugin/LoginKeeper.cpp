#include "plugin/LoginKeeper.h"

#include <utility>

#include "platform/DataProtection.h"
#include "platform/Folders.h"
#include "platform/Text.h"
#include "platform/WholeFile.h"
#include "process/ServerInstance.h"
#include "session/ServerNames.h"

namespace Kestrany::Simulator {

namespace {

constexpr std::string_view LoginPurpose = "Kestrany.TALIX.LoginState";
constexpr std::size_t MaxFile = 64 * 1024;

std::wstring Widen(const std::string& ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}

/// Why the session did not take a login over.
std::string ReasonOf(IdErrorCode code)
{
    if (code == IdLoginExpired)
        return "the login has expired";
    if (code == IdCredentialsRefused)
        return "its user is not known";
    if (code == IdAlreadyLoggedIn)
        return "somebody is signed in";
    return "result " + std::to_string(static_cast<int>(code));
}

} // namespace

std::wstring SettingsFolder()
{
    const std::wstring folder = DataFolder();
    return folder.empty() ? folder : folder + L"\\Simulator";
}

std::wstring LoginFile(const std::string& identity, Server server)
{
    const std::wstring folder = SettingsFolder();
    const std::string name = ServerName(server);
    if (folder.empty() || name.empty() || !IsValidIdentity(identity))
        return {};
    return folder + L"\\" + Widen(identity) + L"." + Widen(name) + L".login";
}

LoginKeeper::LoginKeeper(Session& session, std::function<std::string()> identity, LogSink log)
    : session_(session), identity_(std::move(identity)), log_(std::move(log))
{
}

void LoginKeeper::Keep(Server server)
{
    const std::lock_guard keeping(keeping_);
    const std::wstring file = LoginFile(identity_(), server);
    const FileLockGuard lock(lock_, LockFile());
    if (file.empty() || !lock.IsHeld())
        return log_(TALIXLog::Warning, "Login state not kept: " + SystemMessage(GetLastError()));
    if (const std::optional<LoginRecord> record = session_.GetLogin(server))
        Write(file, *record, server);
    else
        Remove(file);
}

bool LoginKeeper::Load(Server server, bool replace)
{
    const std::string identity = identity_();
    const std::wstring file = LoginFile(identity, server);
    const FileLockGuard lock(lock_, LockFile());
    const std::optional<std::string> bytes = ReadWholeFile(file, MaxFile);
    if (!bytes)
    {
        const DWORD error = GetLastError();
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return missing ? false : Refuse(file, SystemMessage(error));
    }
    const std::optional<std::string> text = Unprotect(*bytes, LoginPurpose);
    if (!text)
        return Refuse(file, "it is damaged, or was not written by this user on this machine");
    std::string problem;
    const std::optional<LoginRecord> record = ReadLoginRecord(*text, {identity, server}, problem);
    if (!record)
        return Refuse(file, problem);
    if (const IdErrorCode code = session_.Restore(server, *record, replace); code != IdSuccess)
        return Refuse(file, ReasonOf(code));
    log_(TALIXLog::Info, "Login state restored from " + ToDisplay(file));
    return true;
}

void LoginKeeper::Lock()
{
    if (!lock_.Lock(LockFile()))
        log_(TALIXLog::Error, "Login state not locked: " + SystemMessage(GetLastError()));
}

void LoginKeeper::Unlock()
{
    if (!lock_.Unlock())
        log_(TALIXLog::Warning, "Login state not unlocked: this process does not hold the lock");
}

std::wstring LoginKeeper::LockFile() const
{
    return SettingsFolder() + L"\\" + Widen(identity_()) + L".lock";
}

void LoginKeeper::Write(const std::wstring& file, const LoginRecord& record, Server server) const
{
    if (!ReplaceWholeFile(file, Protect(WriteLoginRecord(record, {identity_(), server}), LoginPurpose)))
        log_(TALIXLog::Warning, "Login state not written to " + ToDisplay(file) + ": " + SystemMessage(GetLastError()));
}

void LoginKeeper::Remove(const std::wstring& file) const
{
    if (DeleteFileW(file.c_str()))
        return;
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_NOT_FOUND)
        log_(TALIXLog::Warning, "Login state not removed from " + ToDisplay(file) + ": " + SystemMessage(error));
}

bool LoginKeeper::Refuse(const std::wstring& file, const std::string& reason) const
{
    log_(TALIXLog::Warning, "Login state refused in " + ToDisplay(file) + ": " + reason);
    return false;
}

} // namespace Kestrany::Simulator
