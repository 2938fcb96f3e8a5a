#include "platform/Base.h"

#include "base/Platform.h"

namespace Kestrany::Agent {

std::string SystemMessage(unsigned long code)
{
    std::string message = Narrow(IdentityServices::GetSystemErrorText(code));
    message.erase(message.find_last_not_of("\r\n ") + 1);
    return (message.empty() ? std::string("unknown error") : message) + " (" + std::to_string(code) + ")";
}

} // namespace Kestrany::Agent
