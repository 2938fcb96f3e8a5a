// The formatted functions, which Microsoft's headers define inline on top of these.
#include <stdarg.h>
#include <stddef.h>

typedef struct _iobuf FILE;
typedef void* Locale;

FILE* __cdecl __acrt_iob_func(unsigned index);
int __cdecl __stdio_common_vfprintf(unsigned long long, FILE*, const char*, Locale, va_list);
int __cdecl __stdio_common_vfwprintf(unsigned long long, FILE*, const wchar_t*, Locale, va_list);
int __cdecl __stdio_common_vsprintf(unsigned long long, char*, size_t, const char*, Locale, va_list);
int __cdecl __stdio_common_vswprintf(unsigned long long, wchar_t*, size_t, const wchar_t*, Locale, va_list);
int __cdecl __stdio_common_vsscanf(unsigned long long, const char*, size_t, const char*, Locale, va_list);

enum
{
    StandardOutput = 1,
    NoTerminator = 1,   // _CRT_INTERNAL_PRINTF_LEGACY_VSPRINTF_NULL_TERMINATION
    StandardLength = 2, // _CRT_INTERNAL_PRINTF_STANDARD_SNPRINTF_BEHAVIOR
};

int __cdecl vfprintf(FILE* file, const char* format, va_list arguments)
{
    return __stdio_common_vfprintf(0, file, format, 0, arguments);
}

int __cdecl vprintf(const char* format, va_list arguments)
{
    return vfprintf(__acrt_iob_func(StandardOutput), format, arguments);
}

int __cdecl vfwprintf(FILE* file, const wchar_t* format, va_list arguments)
{
    return __stdio_common_vfwprintf(0, file, format, 0, arguments);
}

int __cdecl vwprintf(const wchar_t* format, va_list arguments)
{
    return vfwprintf(__acrt_iob_func(StandardOutput), format, arguments);
}

int __cdecl vsnprintf(char* buffer, size_t size, const char* format, va_list arguments)
{
    const int result = __stdio_common_vsprintf(StandardLength, buffer, size, format, 0, arguments);
    return result < 0 ? -1 : result;
}

int __cdecl vsprintf(char* buffer, const char* format, va_list arguments)
{
    const int result = __stdio_common_vsprintf(NoTerminator, buffer, (size_t)-1, format, 0, arguments);
    return result < 0 ? -1 : result;
}

int __cdecl vswprintf(wchar_t* buffer, size_t size, const wchar_t* format, va_list arguments)
{
    const int result = __stdio_common_vswprintf(0, buffer, size, format, 0, arguments);
    return result < 0 ? -1 : result;
}

int __cdecl _vsnwprintf(wchar_t* buffer, size_t size, const wchar_t* format, va_list arguments)
{
    return __stdio_common_vswprintf(NoTerminator, buffer, size, format, 0, arguments);
}

int __cdecl vsscanf(const char* text, const char* format, va_list arguments)
{
    return __stdio_common_vsscanf(0, text, (size_t)-1, format, 0, arguments);
}

// Calls the function with a list in the place of `...`.
#define CALL_WITH_LIST(call)     \
    va_list arguments;           \
    va_start(arguments, format); \
    const int result = call;     \
    va_end(arguments);           \
    return result

int __cdecl printf(const char* format, ...)
{
    CALL_WITH_LIST(vprintf(format, arguments));
}

int __cdecl fprintf(FILE* file, const char* format, ...)
{
    CALL_WITH_LIST(vfprintf(file, format, arguments));
}

int __cdecl wprintf(const wchar_t* format, ...)
{
    CALL_WITH_LIST(vwprintf(format, arguments));
}

int __cdecl fwprintf(FILE* file, const wchar_t* format, ...)
{
    CALL_WITH_LIST(vfwprintf(file, format, arguments));
}

int __cdecl snprintf(char* buffer, size_t size, const char* format, ...)
{
    CALL_WITH_LIST(vsnprintf(buffer, size, format, arguments));
}

int __cdecl sprintf(char* buffer, const char* format, ...)
{
    CALL_WITH_LIST(vsprintf(buffer, format, arguments));
}

int __cdecl swprintf(wchar_t* buffer, size_t size, const wchar_t* format, ...)
{
    CALL_WITH_LIST(vswprintf(buffer, size, format, arguments));
}

int __cdecl sscanf(const char* text, const char* format, ...)
{
    CALL_WITH_LIST(vsscanf(text, format, arguments));
}
