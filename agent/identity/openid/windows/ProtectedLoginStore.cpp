#include "identity/openid/windows/ProtectedLoginStore.h"

#include <utility>

namespace Kestrany::Agent::OpenId {

std::unique_ptr<ProtectedLoginStore> ProtectedLoginStore::Open(const std::string& identity, LogSink log)
{
    std::unique_ptr<ProtectedLogins> files =
        ProtectedLogins::Open(identity, "Kestrany.TALIX.OpenIdLogin", std::move(log));
    return files ? std::unique_ptr<ProtectedLoginStore>(new ProtectedLoginStore(std::move(files))) : nullptr;
}

bool ProtectedLoginStore::Save(Server server, const Secret* text)
{
    return text == nullptr ? files_->Remove(server) : files_->Save(server, text->View());
}

std::optional<Secret> ProtectedLoginStore::Load(Server server)
{
    std::optional<std::string> text = files_->Load(server);
    if (!text)
        return std::nullopt;
    Secret secret(*text);
    ClearText(*text);
    return secret;
}

} // namespace Kestrany::Agent::OpenId
