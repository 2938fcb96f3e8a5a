#include "plugin/ClientModule.h"

#include <utility>

#include "plugin/NoThrow.h"
#include "plugin/Texts.h"

namespace Kestrany::Agent {

ClientModule::ClientModule(Client& client, LogSink log)
    : client_(client), log_(std::move(log)), productName_("Identity Services simulator")
{
}

void ClientModule::Initialize(bool)
{
    NoThrow([&] {
        log_(TALIXLog::Info, "PellwickClient " AGENT_VERSION " started");
        client_.Begin();
    });
}

void ClientModule::Uninitialize()
{
    NoThrow([&] {
        client_.End();
        log_(TALIXLog::Info, "PellwickClient " AGENT_VERSION " ended");
    });
}

int ClientModule::GetProductName(wchar_t* buffer, int capacity)
{
    return NoThrow(0, [&] {
        const std::lock_guard lock(mutex_);
        return CopyWideLength(productName_, buffer, capacity);
    });
}

void ClientModule::SetProductName(const wchar_t* name)
{
    NoThrow([&] {
        const std::lock_guard lock(mutex_);
        if (TakeWide(name, productName_) != IdSuccess)
            log_(TALIXLog::Warning, "Product name refused: null, empty or not UTF-16");
    });
}

} // namespace Kestrany::Agent
