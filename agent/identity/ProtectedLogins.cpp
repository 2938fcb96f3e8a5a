#include "identity/ProtectedLogins.h"

#include <exception>
#include <utility>

#include "identity/LoginFile.h"
#include "platform/AtomicFile.h"
#include "platform/DataProtection.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t MaxFile = 4 * 1024 * 1024; // Twice the size that the longest texts lead to.

} // namespace

std::unique_ptr<ProtectedLogins> ProtectedLogins::Open(const std::string& identity, std::string purpose, LogSink log)
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
    return std::unique_ptr<ProtectedLogins>(
        new ProtectedLogins(identity, std::move(purpose), std::move(log), std::move(owner)));
}

ProtectedLogins::ProtectedLogins(std::string identity, std::string purpose, LogSink log, Handle owner)
    : identity_(std::move(identity)), purpose_(std::move(purpose)), log_(std::move(log)), owner_(std::move(owner))
{
}

ProtectedLogins::~ProtectedLogins()
{
    ReleaseMutex(owner_.get());
}

bool ProtectedLogins::Save(Server server, std::string_view text)
{
    const std::wstring file = FileOf(server);
    try
    {
        return (!file.empty() && ReplaceFileAtomically(file, Protect(text, purpose_))) ||
               ReportFailure(server, SystemMessage(GetLastError()));
    }
    catch (const std::exception& error)
    {
        return ReportFailure(server, error.what());
    }
}

bool ProtectedLogins::Remove(Server server)
{
    return DeleteFileW(FileOf(server).c_str()) || IsMissingFile(GetLastError()) ||
           ReportFailure(server, SystemMessage(GetLastError()));
}

std::optional<std::string> ProtectedLogins::Load(Server server)
{
    const FileContents contents = ReadFileContents(FileOf(server), MaxFile);
    if (!contents.IsRead())
    {
        if (!IsMissingFile(contents.error))
            Refuse(server, SystemMessage(contents.error));
        return std::nullopt;
    }
    std::optional<std::string> text = Unprotect(contents.bytes, purpose_);
    if (!text)
        Refuse(server, "it is damaged, or was not written by this user on this machine");
    return text;
}

void ProtectedLogins::Accept(Server server) const
{
    log_(TALIXLog::Info, "Login state read from " + Narrow(FileOf(server)));
}

void ProtectedLogins::Refuse(Server server, const std::string& reason) const
{
    log_(TALIXLog::Warning, "Login state refused in " + Narrow(FileOf(server)) + ": " + reason);
}

std::wstring ProtectedLogins::FileOf(Server server) const
{
    return LoginFile(identity_, server);
}

bool ProtectedLogins::ReportFailure(Server server, const std::string& reason) const
{
    log_(TALIXLog::Error, "Login state not written to " + Narrow(FileOf(server)) + ": " + reason);
    return false;
}

} // namespace Kestrany::Agent
