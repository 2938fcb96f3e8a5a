#include "identity/simulated/LoginFiles.h"

#include <exception>
#include <utility>

#include "identity/LoginFile.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/DataProtection.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent::Simulated {

namespace {

constexpr std::string_view LoginPurpose = "Kestrany.TALIX.LoginState";
constexpr std::size_t MaxFile = 4 * 1024 * 1024; // Twice the size that the longest texts lead to.

} // namespace

std::unique_ptr<LoginFiles> LoginFiles::Open(const std::string& identity, LogSink log)
{
    if (!IsValidIdentity(identity))
        return nullptr;
    Handle owner(CreateMutexW(nullptr, FALSE, SessionObjectName(identity + ".Logins").c_str()));
    const DWORD result = owner ? WaitForSingleObject(owner.get(), 0) : WAIT_FAILED;
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED)
    {
        log(TALIXLog::Error, "Another server process has the logins of " + identity);
        return nullptr;
    }
    return std::unique_ptr<LoginFiles>(new LoginFiles(identity, std::move(log), std::move(owner)));
}

LoginFiles::LoginFiles(std::string identity, LogSink log, Handle owner)
    : identity_(std::move(identity)), log_(std::move(log)), owner_(std::move(owner))
{
}

LoginFiles::~LoginFiles()
{
    ReleaseMutex(owner_.get());
}

bool LoginFiles::Save(Server server, const std::optional<LoginRecord>& record)
{
    const std::wstring file = LoginFile(identity_, server);
    try
    {
        if (record && !file.empty() &&
            ReplaceFileAtomically(file, Protect(WriteLoginRecord(*record, {identity_, server}), LoginPurpose)))
            return true;
        if (!record && (DeleteFileW(file.c_str()) || IsMissingFile(GetLastError())))
            return true;
        log_(TALIXLog::Error, "Login state not written to " + Narrow(file) + ": " + SystemMessage(GetLastError()));
    }
    catch (const std::exception& error)
    {
        log_(TALIXLog::Error, "Login state not written to " + Narrow(file) + ": " + error.what());
    }
    return false;
}

std::optional<LoginRecord> LoginFiles::Load(Server server)
{
    const std::wstring file = LoginFile(identity_, server);
    const FileContents contents = ReadFileContents(file, MaxFile);
    if (!contents.IsRead())
    {
        if (!IsMissingFile(contents.error))
            Refuse(server, SystemMessage(contents.error));
        return std::nullopt;
    }
    const std::optional<std::string> text = Unprotect(contents.bytes, LoginPurpose);
    std::string problem = "it is damaged, or was not written by this user on this machine";
    std::optional<LoginRecord> record;
    if (text)
        record = ReadLoginRecord(*text, {identity_, server}, problem);
    if (!record)
        Refuse(server, problem);
    else
        log_(TALIXLog::Info, "Login state read from " + Narrow(file));
    return record;
}

void LoginFiles::Refuse(Server server, const std::string& reason)
{
    log_(TALIXLog::Warning, "Login state refused in " + Narrow(LoginFile(identity_, server)) + ": " + reason);
}

} // namespace Kestrany::Agent::Simulated
