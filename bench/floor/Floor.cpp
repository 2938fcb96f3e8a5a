#include "floor/Floor.h"

#include <cstring>
#include <mutex>
#include <windows.h>

namespace Kestrany::Floor {
namespace {

using namespace IdentityServices;

/// The platform's fastest recursive lock.
class Lock
{
public:
    Lock() { InitializeCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    void lock() { EnterCriticalSection(&section_); }
    void unlock() { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
};

Lock theLock;
ISSOClient* theClient = nullptr;

ISSOClient* Client()
{
    const std::lock_guard<Lock> guard(theLock);
    return theClient;
}

} // namespace

void SetClient(ISSOClient* client)
{
    const std::lock_guard<Lock> guard(theLock);
    theClient = client;
}

bool IsLoggedIn()
{
    ISSOClient* client = Client();
    return client ? client->IsLoggedIn() : false;
}

talix_status_code RefreshToken() noexcept
{
    ISSOClient* client = Client();
    return client ? client->RefreshOAuth2Token(false) : IdClientUnavailable;
}

talix_status_code GetToken(talix_buffer* token)
{
    constexpr int units = 4096;
    wchar_t text[units] = {};
    const talix_status_code result = theClient->GetOAuth2AccessToken(text, units, false);
    char utf8[3 * units];
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8, static_cast<int>(sizeof utf8), nullptr,
                                         nullptr); // Including the terminating zero.
    if (size > token->size)
        return IdBufferTooSmall;
    std::memcpy(token->buffer, utf8, static_cast<std::size_t>(size));
    return result;
}

} // namespace Kestrany::Floor
