// Entry point of a program; with WIDE_ARGUMENTS, of one that begins at wmain.
#include "Startup.h"

int* __cdecl __p___argc(void);
char*** __cdecl __p___argv(void);
wchar_t*** __cdecl __p___wargv(void);
int __cdecl _configure_narrow_argv(int mode);
int __cdecl _configure_wide_argv(int mode);
int __cdecl _initialize_narrow_environment(void);
int __cdecl _initialize_wide_environment(void);
int __cdecl _seh_filter_exe(unsigned long code, struct _EXCEPTION_POINTERS* pointers);
void __cdecl _set_app_type(int type);
void __cdecl _register_thread_local_exe_atexit_callback(PIMAGE_TLS_CALLBACK callback);

enum
{
    ConsoleProgram = 1, // _crt_console_app
    PlainArguments = 1, // _crt_argv_unexpanded_arguments
    FailedToStart = 255,
};

#ifdef WIDE_ARGUMENTS
#define ENTRY wmainCRTStartup

int wmain(int, wchar_t**);

static int Configure(void)
{
    return _configure_wide_argv(PlainArguments) || _initialize_wide_environment();
}

static int CallMain(void)
{
    return wmain(*__p___argc(), *__p___wargv());
}
#else
#define ENTRY mainCRTStartup

int main(int, char**);

static int Configure(void)
{
    return _configure_narrow_argv(PlainArguments) || _initialize_narrow_environment();
}

static int CallMain(void)
{
    return main(*__p___argc(), *__p___argv());
}
#endif

static int Run(void)
{
    __security_init_cookie();
    _set_app_type(ConsoleProgram);
    if (Configure() || _initterm_e(__xi_a, __xi_z))
        return FailedToStart;
    _register_thread_local_exe_atexit_callback(EndThread);
    _initterm(__xc_a, __xc_z);
    return CallMain();
}

int ENTRY(void)
{
    __try
    {
        exit(Run());
    }
    __except (_seh_filter_exe(GetExceptionCode(), GetExceptionInformation()))
    {
        _exit(GetExceptionCode());
    }
}
