#include "plugin/Plugin.h"

#include "platform/Random.h"

namespace Kestrany::Simulator {

Plugin& Plugin::Get()
{
    static Plugin& plugin = *new Plugin;
    return plugin;
}

Plugin::Plugin()
    : log_(DefaultLogFile()),
      sink_([this](TALIXLog::LogLevel level, const std::string& message) { Log(level, message); }), loggers_(log_),
      serverManager_(sink_), session_(DefaultAccounts(), &std::chrono::system_clock::now, &SystemRandom, events_),
      logins_(
          session_, [this] { return serverManager_.ServerIdentity(); }, sink_),
      client_(session_, events_, logins_, sink_), module_(client_, sink_),
      private_(session_, events_, logins_, serverManager_, sink_)
{
}

void Plugin::Log(TALIXLog::LogLevel level, const std::string& message) const
{
    log_.Write("PellwickClient", level, message);
}

} // namespace Kestrany::Simulator
