#ifndef ORLINDEX_MICROSOFT_STARTUP_H
#define ORLINDEX_MICROSOFT_STARTUP_H

// What the parts of the runtime share. Most names are those that the compiler and its linker know.

#include <windows.h>

#include <corecrt_startup.h>
#include <process.h>
#include <stdlib.h>

// Variables of these sections form one table in each module: the linker sorts them by the letters after the dollar
// sign.
#define IN_SECTION(name) __declspec(allocate(name))

typedef void(__cdecl* Initializer)(void);
typedef int(__cdecl* FallibleInitializer)(void);

extern FallibleInitializer __xi_a[], __xi_z[];
extern Initializer __xc_a[], __xc_z[];

/// In a DLL: the functions that run when it is unloaded.
extern _onexit_table_t moduleExitTable;
extern int isDll;

int __cdecl _initterm_e(FallibleInitializer*, FallibleInitializer*);
void __cdecl _initterm(Initializer*, Initializer*);
void __cdecl __security_init_cookie(void);
void NTAPI EndThread(PVOID module, DWORD reason, PVOID reserved);

#endif
