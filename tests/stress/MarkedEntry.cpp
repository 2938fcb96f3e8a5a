// Linked into a build of the test plugin: sets a mark in the process that maps the module, before any other code of the
// module runs.

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID /*reserved*/)
{
    if (reason == DLL_PROCESS_ATTACH)
        SetEnvironmentVariableW(L"ORLINDEX_TEST_PLUGIN_ENTERED", L"1");
    return TRUE;
}
