#include "api/LocalSystemAccount.h"

#include <memory>
#include <windows.h>

namespace Kestrany::IdentityServices {
namespace {

struct SidDeleter
{
    void operator()(void* sid) const { FreeSid(sid); }
};

using Sid = std::unique_ptr<void, SidDeleter>;

Sid LocalSystemSid()
{
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID sid = nullptr;
    if (!AllocateAndInitializeSid(&authority, 1, SECURITY_LOCAL_SYSTEM_RID, 0, 0, 0, 0, 0, 0, 0, &sid))
        return nullptr;
    return Sid(sid);
}

} // namespace

bool RunsAsLocalSystem()
{
    const Sid localSystem = LocalSystemSid();
    BOOL member = FALSE;
    return localSystem && CheckTokenMembership(nullptr, localSystem.get(), &member) && member;
}

} // namespace Kestrany::IdentityServices
