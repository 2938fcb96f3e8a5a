#include "process/Scope.h"

#include <windows.h>

#include "platform/Digest.h"
#include "platform/Folders.h"
#include "platform/Text.h"
#include "platform/User.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t DigestBytes = 16;

std::wstring UpperCase(std::wstring text)
{
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

std::wstring Hexadecimal(const std::string& bytes)
{
    static constexpr wchar_t digits[] = L"0123456789abcdef";
    std::wstring text;
    for (const char byte : bytes)
    {
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

} // namespace

const std::wstring& ScopeName()
{
    static const std::wstring name = [] {
        const std::string digest = Sha256(ToDisplay(OwnUserSid() + L"|" + UpperCase(SettingsFolder())));
        return L"Kestrany.TALIX." + Hexadecimal(digest.substr(0, DigestBytes));
    }();
    return name;
}

std::wstring HostPipeName(const std::string& identity)
{
    return L"\\\\.\\pipe\\" + ScopeName() + L"." + std::wstring(identity.begin(), identity.end()) + L".Hosts";
}

} // namespace Kestrany::Agent
