#include "identity/simulated/LoginFiles.h"

#include <utility>

namespace Kestrany::Agent::Simulated {

std::unique_ptr<LoginFiles> LoginFiles::Open(const std::string& identity, LogSink log)
{
    std::unique_ptr<ProtectedLogins> files =
        ProtectedLogins::Open(identity, "Kestrany.TALIX.LoginState", std::move(log));
    return files ? std::unique_ptr<LoginFiles>(new LoginFiles(std::move(files))) : nullptr;
}

bool LoginFiles::Save(Server server, const std::optional<LoginRecord>& record)
{
    if (!record)
        return files_->Remove(server);
    return files_->Save(server, WriteLoginRecord(*record, {files_->Identity(), server}));
}

std::optional<LoginRecord> LoginFiles::Load(Server server)
{
    const std::optional<std::string> text = files_->Load(server);
    if (!text)
        return std::nullopt;
    std::string problem;
    std::optional<LoginRecord> record = ReadLoginRecord(*text, {files_->Identity(), server}, problem);
    if (record)
        files_->Accept(server);
    else
        Refuse(server, problem);
    return record;
}

void LoginFiles::Refuse(Server server, const std::string& reason)
{
    files_->Refuse(server, reason);
}

} // namespace Kestrany::Agent::Simulated
