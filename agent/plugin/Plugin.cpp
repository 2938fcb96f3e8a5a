#include "plugin/Plugin.h"

#include <utility>

namespace Kestrany::Agent {

Plugin& Plugin::Get()
{
    static Plugin& plugin = *new Plugin;
    return plugin;
}

Plugin::Plugin()
    : log_(DefaultLogFile()),
      sink_([this](TALIXLog::LogLevel level, const std::string& message) { Log(level, message); }), loggers_(log_),
      serverManager_(sink_), connection_(ConnectionParts()),
      logins_([this](Request request) { return connection_.Ask(std::move(request)); }), session_(logins_, events_),
      client_(session_, events_, logins_, connection_, sink_), module_(client_, sink_),
      private_(session_, events_, serverManager_, sink_)
{
}

ServerConnection::Parts Plugin::ConnectionParts()
{
    // Called from the first operation on, when all members are initialized.
    ServerConnection::Parts parts;
    parts.target = [this] { return serverManager_.Target(); };
    parts.server = [this] { return session_.GetServer(); };
    parts.onEvent = [this](const LoginEvent& event) { session_.Receive(event); };
    parts.log = sink_;
    return parts;
}

void Plugin::Log(TALIXLog::LogLevel level, const std::string& message) const
{
    log_.Write("PellwickClient", level, message);
}

} // namespace Kestrany::Agent

/// The library looks this function up by the name that the Microsoft compiler gives to this declaration.
Kestrany::IdentityServices::ISSOClientFactory* GetSSOClientFactory()
{
    try
    {
        return &Kestrany::Agent::Plugin::Get();
    }
    catch (...)
    {
        return nullptr; // Out of memory; the library then reports that the client is unavailable.
    }
}
