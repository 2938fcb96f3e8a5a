#include "platform/ObjectNamespace.h"

#include <algorithm>

#include "platform/Base.h"
#include "platform/Crypto.h"
#include "platform/Folders.h"
#include "platform/User.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t MaxIdentity = 120;
constexpr std::size_t DigestBytes = 16;
constexpr wchar_t PipePrefix[] = L"\\\\.\\pipe\\";

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

std::wstring ProcessObjectName(DWORD processId, const char* kind)
{
    return SessionObjectName("Process." + std::to_string(processId) + "." + kind);
}

} // namespace

const std::wstring& ObjectNamespace()
{
    static const std::wstring name = [] {
        const std::string digest = Sha256(Narrow(OwnUserSid() + L"|" + UpperCase(SettingsFolder())));
        return L"Kestrany.TALIX." + Hexadecimal(digest.substr(0, DigestBytes));
    }();
    return name;
}

std::wstring SessionObjectName(const std::string& kind)
{
    return L"Local\\" + ObjectNamespace() + L"." + std::wstring(kind.begin(), kind.end());
}

bool IsValidIdentity(const std::string& identity)
{
    const auto isAllowed = [](char character) {
        return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
               (character >= '0' && character <= '9') || character == '.' || character == '_' || character == '-';
    };
    return !identity.empty() && identity.size() <= MaxIdentity && identity.front() != '-' &&
           std::all_of(identity.begin(), identity.end(), isAllowed);
}

std::wstring HostPipeName(const std::string& identity)
{
    return PipePrefix + ObjectNamespace() + L"." + std::wstring(identity.begin(), identity.end()) + L".Hosts";
}

std::wstring ReadyEventName(const std::string& identity)
{
    return SessionObjectName(identity + ".Ready");
}

std::wstring StartMutexName(const std::string& identity)
{
    return SessionObjectName(identity + ".Start");
}

std::wstring ProcessPipeName(DWORD processId)
{
    return PipePrefix + (L"Kestrany.TALIX.Process." + std::to_wstring(processId));
}

std::wstring QuitEventName(DWORD processId)
{
    return ProcessObjectName(processId, "Quit");
}

std::wstring FrozenEventName(DWORD processId)
{
    return ProcessObjectName(processId, "Frozen");
}

std::wstring ThawEventName(DWORD processId)
{
    return ProcessObjectName(processId, "Thaw");
}

} // namespace Kestrany::Agent
