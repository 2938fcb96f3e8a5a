#include "base/Wow64.h"

#include <windows.h>

namespace Kestrany::IdentityServices {

bool IsWow64()
{
    BOOL wow64 = FALSE;
    return IsWow64Process(GetCurrentProcess(), &wow64) && wow64;
}

} // namespace Kestrany::IdentityServices
