#ifndef AGENT_PLUGIN_CLIENTMODULE_H
#define AGENT_PLUGIN_CLIENTMODULE_H

#include <mutex>
#include <string>

#include "load/contract/ISSOClientModule.h"
#include "plugin/Client.h"

namespace Kestrany::Agent {

class ClientModule final : public IdentityServices::ISSOClientModule
{
public:
    ClientModule(Client& client, LogSink log);

    void Reserved0() override {}
    /// `flag` has no meaning here.
    void Initialize(bool flag) override;
    void Reserved2() override {}
    void Uninitialize() override;
    int GetProductName(wchar_t* buffer, int capacity) override;
    /// A name that is null, empty or not well formed changes nothing.
    void SetProductName(const wchar_t* name) override;

private:
    Client& client_;
    LogSink log_;
    std::mutex mutex_;
    std::string productName_;
};

} // namespace Kestrany::Agent

#endif
