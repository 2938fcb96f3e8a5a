// The tables of initialisers, and the functions that run at the end. Every module contains this file.
#include "Startup.h"

#pragma section(".CRT$XIA", read)
#pragma section(".CRT$XIZ", read)
#pragma section(".CRT$XCA", read)
#pragma section(".CRT$XCZ", read)
IN_SECTION(".CRT$XIA") FallibleInitializer __xi_a[] = {0};
IN_SECTION(".CRT$XIZ") FallibleInitializer __xi_z[] = {0};
IN_SECTION(".CRT$XCA") Initializer __xc_a[] = {0};
IN_SECTION(".CRT$XCZ") Initializer __xc_z[] = {0};

int isDll = 0;
_onexit_table_t moduleExitTable;

int __cdecl atexit(void(__cdecl* function)(void))
{
    return isDll ? _register_onexit_function(&moduleExitTable, (_onexit_t)function) : _crt_atexit((_PVFV)function);
}

_onexit_t __cdecl _onexit(_onexit_t function)
{
    return atexit((void(__cdecl*)(void))function) ? 0 : function;
}

#pragma comment(lib, "ucrt")
#pragma comment(lib, "vcruntime")
#pragma comment(lib, "kernel32")

// Names without an underscore.
#define OLD_NAME(name) __pragma(comment(linker, "/alternatename:" #name "=_" #name))
// clang-format off: pragmas without a semicolon.
OLD_NAME(access) OLD_NAME(chdir) OLD_NAME(close) OLD_NAME(creat) OLD_NAME(dup) OLD_NAME(dup2) OLD_NAME(fdopen)
OLD_NAME(fileno) OLD_NAME(getcwd) OLD_NAME(getpid) OLD_NAME(isatty) OLD_NAME(lseek) OLD_NAME(mkdir) OLD_NAME(open)
OLD_NAME(putenv) OLD_NAME(read) OLD_NAME(rmdir) OLD_NAME(strdup) OLD_NAME(stricmp) OLD_NAME(strnicmp) OLD_NAME(tzset)
OLD_NAME(unlink) OLD_NAME(wcsdup) OLD_NAME(wcsicmp) OLD_NAME(write)
    // clang-format on

    // The compiler refers to it in every module that uses floating point.
    int _fltused = 0x9875;
// The locale.h of mingw-w64 refers to it if char is unsigned (/J).
int __mingw_initcharmax = 0;
