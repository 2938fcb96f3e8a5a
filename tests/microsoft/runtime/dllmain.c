// For DLLs that have no DllMain; in a file of its own, so that the linker only takes it then.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    return TRUE;
}
