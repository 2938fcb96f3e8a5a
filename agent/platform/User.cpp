#include "platform/User.h"

#include <stdexcept>
#include <vector>

#include <sddl.h>

#include "platform/Base.h"

namespace Kestrany::Agent {

namespace {

Handle OpenToken(HANDLE process)
{
    HANDLE token = nullptr;
    if (!OpenProcessToken(process, TOKEN_QUERY, &token))
        return {};
    return Handle(token);
}

} // namespace

std::wstring UserSidOf(HANDLE process)
{
    const Handle token = OpenToken(process);
    DWORD size = 0;
    if (!token || GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size) || size == 0)
        return {};
    std::vector<BYTE> bytes(size);
    wchar_t* text = nullptr;
    if (!GetTokenInformation(token.get(), TokenUser, bytes.data(), size, &size) ||
        !ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(bytes.data())->User.Sid, &text))
        return {};
    const LocalMemory<wchar_t> owner(text);
    return text;
}

const std::wstring& OwnUserSid()
{
    static const std::wstring sid = [] {
        std::wstring own = UserSidOf(GetCurrentProcess());
        if (own.empty())
            throw std::runtime_error("the system does not tell the user: " + SystemMessage(GetLastError()));
        return own;
    }();
    return sid;
}

} // namespace Kestrany::Agent
