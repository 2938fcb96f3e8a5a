#ifndef AGENT_IDENTITY_PROTECTEDLOGINS_H
#define AGENT_IDENTITY_PROTECTEDLOGINS_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "orlindex/IdErrorCode.h"
#include "platform/Base.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent {

/// The login files of one identity, which only the user can read on this machine. One process at a time may keep them.
class ProtectedLogins
{
public:
    /// Null for an invalid identity, and while another process keeps its logins. `purpose`: a text that was written for
    /// another one is refused.
    static std::unique_ptr<ProtectedLogins> Open(const std::string& identity, std::string purpose, LogSink log);
    ~ProtectedLogins();
    ProtectedLogins(const ProtectedLogins&) = delete;
    ProtectedLogins& operator=(const ProtectedLogins&) = delete;

    const std::string& Identity() const { return identity_; }
    /// True once the text outlives this process. A failure is logged.
    bool Save(Server server, std::string_view text);
    /// True once there is no text. A failure is logged.
    bool Remove(Server server);
    /// nullopt if there is no text, or one that is refused.
    std::optional<std::string> Load(Server server);
    /// Logs that a loaded text is used, or why it is not.
    void Accept(Server server) const;
    void Refuse(Server server, const std::string& reason) const;

private:
    ProtectedLogins(std::string identity, std::string purpose, LogSink log, Handle owner);

    std::wstring FileOf(Server server) const;
    bool ReportFailure(Server server, const std::string& reason) const;

    const std::string identity_;
    const std::string purpose_;
    const LogSink log_;
    const Handle owner_; ///< Mutex that this process holds.
};

} // namespace Kestrany::Agent

#endif
