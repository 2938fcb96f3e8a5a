// Entry point of a DLL.
#include "Startup.h"

BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID);

BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    static LONG attached;
    if (reason == DLL_PROCESS_DETACH && attached == 0)
        return FALSE;
    if (reason == DLL_PROCESS_ATTACH)
    {
        __security_init_cookie();
        isDll = 1;
        _initialize_onexit_table(&moduleExitTable);
        if (_initterm_e(__xi_a, __xi_z))
            return FALSE;
        _initterm(__xc_a, __xc_z);
        ++attached;
    }
    const BOOL result = DllMain(module, reason, reserved);
    if (reason == DLL_PROCESS_DETACH || (reason == DLL_PROCESS_ATTACH && !result))
    {
        --attached;
        _execute_onexit_table(&moduleExitTable);
    }
    return result;
}
