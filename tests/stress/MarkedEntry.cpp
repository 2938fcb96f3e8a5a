// Linked into a build of the test plugin: leaves a mark in the process that maps the module, before anything else of it
// runs.

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID /*reserved*/)
{
    if (reason == DLL_PROCESS_ATTACH)
        SetEnvironmentVariableW(L"ORLINDEX_TEST_PLUGIN_ENTERED", L"1");
    return TRUE;
}
