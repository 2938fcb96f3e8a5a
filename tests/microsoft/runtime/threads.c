// Thread variables: the module's directory of them, their initialisers and their destructors.
#include "Startup.h"

#pragma section(".CRT$XDA", read)
#pragma section(".CRT$XDZ", read)
#pragma section(".CRT$XLA", read)
#pragma section(".CRT$XLC", read)
#pragma section(".CRT$XLD", read)
#pragma section(".CRT$XLZ", read)
#pragma section(".tls", read, write)
#pragma section(".tls$ZZZ", read, write)
#pragma section(".rdata$T", read)
IN_SECTION(".CRT$XDA") Initializer __xd_a = 0;
IN_SECTION(".CRT$XDZ") Initializer __xd_z = 0;
IN_SECTION(".CRT$XLA") PIMAGE_TLS_CALLBACK __xl_a = 0;
IN_SECTION(".CRT$XLZ") PIMAGE_TLS_CALLBACK __xl_z = 0;
IN_SECTION(".tls") char _tls_start = 0;
IN_SECTION(".tls$ZZZ") char _tls_end = 0;
ULONG _tls_index = 0;

// The linker puts it into the header of the module by its name.
IN_SECTION(".rdata$T")
const IMAGE_TLS_DIRECTORY64 _tls_used = {
    (ULONGLONG)&_tls_start, (ULONGLONG)&_tls_end, (ULONGLONG)&_tls_index, (ULONGLONG)(&__xl_a + 1), 0, {0}};

__declspec(thread) char __tls_guard = 0;

void NTAPI __dyn_tls_init(PVOID module, DWORD reason, PVOID reserved)
{
    if ((reason != DLL_THREAD_ATTACH && reason != DLL_PROCESS_ATTACH) || __tls_guard)
        return;
    __tls_guard = 1;
    for (Initializer* next = &__xd_a + 1; next != &__xd_z; ++next)
        if (*next)
            (*next)();
}

// For threads that were there before the module.
void __cdecl __dyn_tls_on_demand_init(void)
{
    __dyn_tls_init(0, DLL_THREAD_ATTACH, 0);
}

typedef struct Destructor
{
    struct Destructor* next;
    Initializer run;
} Destructor;

static __declspec(thread) Destructor* destructors;

int __cdecl __tlregdtor(Initializer run)
{
    Destructor* entry = malloc(sizeof *entry);
    if (!entry)
        return -1;
    entry->run = run;
    entry->next = destructors;
    destructors = entry;
    return 0;
}

// The last registered destructor runs first.
void NTAPI EndThread(PVOID module, DWORD reason, PVOID reserved)
{
    if (reason != DLL_THREAD_DETACH && reason != DLL_PROCESS_DETACH)
        return;
    while (destructors)
    {
        Destructor* entry = destructors;
        destructors = entry->next;
        entry->run();
        free(entry);
    }
}

IN_SECTION(".CRT$XLC") PIMAGE_TLS_CALLBACK __xl_c = __dyn_tls_init;
IN_SECTION(".CRT$XLD") PIMAGE_TLS_CALLBACK __xl_d = EndThread;
