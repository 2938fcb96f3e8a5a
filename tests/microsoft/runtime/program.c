// Entry point of a program; with WIDE_ARGUMENTS, of one that begins at wmain; with WINDOWS, of one that begins at
// WinMain.
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
    WindowProgram = 2,  // _crt_gui_app
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
static int Configure(void)
{
    return _configure_narrow_argv(PlainArguments) || _initialize_narrow_environment();
}

#ifdef WINDOWS
#define ENTRY WinMainCRTStartup

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int);
char* __cdecl _get_narrow_winmain_command_line(void);

static int CallMain(void)
{
    STARTUPINFOW startup;
    GetStartupInfoW(&startup);
    return WinMain(GetModuleHandleW(NULL), NULL, _get_narrow_winmain_command_line(),
                   (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 ? startup.wShowWindow : SW_SHOWDEFAULT);
}
#else
#define ENTRY mainCRTStartup

int main(int, char**);

static int CallMain(void)
{
    return main(*__p___argc(), *__p___argv());
}
#endif
#endif

#ifdef WINDOWS
#define PROGRAM WindowProgram
#else
#define PROGRAM ConsoleProgram
#endif

static int Run(void)
{
    __security_init_cookie();
    _set_app_type(PROGRAM);
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
