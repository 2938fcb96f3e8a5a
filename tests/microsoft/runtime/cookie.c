// The value that functions with buffers store beside their return address, and compare before they return.
#include "Startup.h"

UINT_PTR __security_cookie = 0x00002B992DDFA232ull;

void __cdecl __security_init_cookie(void)
{
    const UINT_PTR used = 0x0000FFFFFFFFFFFFull; // The zeros stop functions that copy texts.
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    __security_cookie = (((UINT_PTR)now.QuadPart << 16) ^ (UINT_PTR)GetCurrentThreadId() ^ (UINT_PTR)&now) & used;
}

void __cdecl __security_check_cookie(UINT_PTR cookie)
{
    if (cookie != __security_cookie)
        __fastfail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE);
}
