#include "PlatformFunctions.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include <windows.h>

namespace OrlindexTest {

namespace {

// What a function of that kind returns when it fails.

constexpr Word False = 0;
constexpr Word Null = 0;
constexpr Word NoLength = 0;
constexpr Word InvalidHandle = ~Word{0};
constexpr Word EndOfFile = 0xFFFFFFFF;
constexpr Word EndOfWideFile = 0xFFFF;
constexpr Word NoIndex = 0xFFFFFFFF;
constexpr Word NoAttributes = 0xFFFFFFFF;
constexpr Word EmptyName = 1; ///< The length of a certificate's name, with its zero.

/// Functions whose result is the error itself.
constexpr FailingResult Status(DWORD code)
{
    return {code, ERROR_SUCCESS};
}

struct Row
{
    const char* function;
    FailingResult result;
};

constexpr Row Failing[] = {
    {"AllocateAndInitializeSid", {False, ERROR_NOT_ENOUGH_MEMORY}},
    {"CertGetNameStringA", {EmptyName, ERROR_SUCCESS}},
    {"CertGetNameStringW", {EmptyName, ERROR_SUCCESS}},
    {"CheckTokenMembership", {False, ERROR_ACCESS_DENIED}},
    {"CloseHandle", {False, ERROR_INVALID_HANDLE}},
    {"CreateFileW", {InvalidHandle, ERROR_ACCESS_DENIED}},
    {"CreateFileW", {InvalidHandle, ERROR_TOO_MANY_OPEN_FILES}},
    {"CryptHashCertificate2", {False, static_cast<DWORD>(NTE_BAD_ALGID)}},
    {"FlsAlloc", {NoIndex, ERROR_NOT_ENOUGH_MEMORY}},
    {"FormatMessageW", {NoLength, ERROR_MR_MID_NOT_FOUND}},
    {"FreeLibrary", {False, ERROR_INVALID_HANDLE}},
    {"GetDllDirectoryW", {NoLength, ERROR_NOT_ENOUGH_MEMORY}},
    {"GetFileAttributesExW", {False, ERROR_ACCESS_DENIED}},
    {"GetFileAttributesW", {NoAttributes, ERROR_ACCESS_DENIED}},
    {"GetFileInformationByHandle", {False, ERROR_INVALID_FUNCTION}},
    {"GetFileSizeEx", {False, ERROR_INVALID_FUNCTION}},
    {"GetFileType", {NoLength, ERROR_INVALID_HANDLE}},
    {"GetFinalPathNameByHandleW", {NoLength, ERROR_ACCESS_DENIED}},
    {"GetFullPathNameW", {NoLength, ERROR_NOT_ENOUGH_MEMORY}},
    {"GetModuleFileNameW", {NoLength, ERROR_MOD_NOT_FOUND}},
    {"GetModuleHandleW", {Null, ERROR_MOD_NOT_FOUND}},
    {"GetProcAddress", {Null, ERROR_PROC_NOT_FOUND}},
    {"IsWow64Process", {False, ERROR_ACCESS_DENIED}},
    {"LoadLibraryExW", {Null, ERROR_MOD_NOT_FOUND}},
    {"LoadLibraryExW", {Null, ERROR_NOT_ENOUGH_MEMORY}},
    {"LoadLibraryW", {Null, ERROR_NOT_ENOUGH_MEMORY}},
    {"MultiByteToWideChar", {NoLength, ERROR_NO_UNICODE_TRANSLATION}},
    {"NtQueryInformationFile", Status(0xC000009A)}, // the system has no resources
    {"NtQueryVirtualMemory", Status(0xC000009A)},
    {"PathFileExistsW", {False, ERROR_ACCESS_DENIED}},
    {"ReadFile", {False, ERROR_READ_FAULT}},
    {"RegCloseKey", Status(ERROR_INVALID_HANDLE)},
    {"RegEnumKeyExW", Status(ERROR_MORE_DATA)},
    {"RegEnumKeyExW", Status(ERROR_KEY_DELETED)},
    {"RegOpenKeyExW", Status(ERROR_ACCESS_DENIED)},
    {"RegQueryInfoKeyW", Status(ERROR_KEY_DELETED)},
    {"RegQueryValueExW", Status(ERROR_MORE_DATA)},
    {"RegQueryValueExW", Status(ERROR_OUTOFMEMORY)},
    {"SetDllDirectoryW", {False, ERROR_NOT_ENOUGH_MEMORY}},
    {"SHGetKnownFolderPath", Status(static_cast<DWORD>(E_FAIL))},
    {"WTHelperGetProvCertFromChain", {Null, ERROR_SUCCESS}},
    {"WTHelperGetProvSignerFromChain", {Null, ERROR_SUCCESS}},
    {"WTHelperProvDataFromStateData", {Null, ERROR_SUCCESS}},
    {"WideCharToMultiByte", {NoLength, ERROR_NO_UNICODE_TRANSLATION}},
    {"WinVerifyTrust", Status(static_cast<DWORD>(TRUST_E_FAIL))},
    {"WinVerifyTrust", Status(static_cast<DWORD>(E_OUTOFMEMORY))},
    {"_create_locale", {Null, ERROR_SUCCESS}},
    {"_strdup", {Null, ERROR_SUCCESS}},
    {"_aligned_malloc", {Null, ERROR_SUCCESS}},
    {"_fileno", {EndOfFile, ERROR_SUCCESS}},
    {"_write", {EndOfFile, ERROR_SUCCESS}},
    {"fflush", {EndOfFile, ERROR_DISK_FULL}},
    {"fwrite", {NoLength, ERROR_DISK_FULL}},
    {"fputwc", {EndOfWideFile, ERROR_NO_UNICODE_TRANSLATION}},
    {"putwc", {EndOfWideFile, ERROR_NO_UNICODE_TRANSLATION}},
};

constexpr const char* Infallible[] = {
    // They wait, return facts about this process, or release something and return nothing.
    "CoTaskMemFree", "EnterCriticalSection", "FreeSid", "GetCurrentProcess", "GetCurrentProcessId",
    "GetCurrentThreadId", "GetLastError", "LeaveCriticalSection", "LocalFree", "SetLastError", "Sleep",
    // Runtime: memory that is there, texts, classes of characters, the runtime's own locks and data.
    "___lc_codepage_func", "___mb_cur_max_func", "__iob_func", "_errno", "_lock", "_strtoi64", "_unlock", "clearerr",
    "ferror", "free", "islower", "isspace", "isupper", "iswctype", "localeconv", "memchr", "memcmp", "memcpy",
    "memmove", "memset", "strchr", "strcmp", "strlen", "strncmp", "towlower", "towupper", "wcslen",
    // The same of the other compiler's runtime and standard library. Numbers are formatted into buffers that they fit.
    "AcquireSRWLockExclusive", "AreFileApisANSI", "DeleteCriticalSection", "FlsGetValue", "FlsSetValue",
    "GetSystemInfo", "GetSystemTimePreciseAsFileTime", "GetThreadId", "InitOnceExecuteOnce",
    "InitializeCriticalSection", "QueryPerformanceCounter", "QueryPerformanceFrequency", "ReleaseSRWLockExclusive",
    "SleepConditionVariableSRW", "SwitchToThread", "TryAcquireSRWLockExclusive", "TryEnterCriticalSection",
    "WakeAllConditionVariable", "WakeConditionVariable", "___mb_cur_max_l_func", "__acrt_iob_func", "__pctype_func",
    "__std_exception_copy", "__std_exception_destroy", "__std_type_info_compare", "__std_type_info_hash",
    "__std_type_info_name", "__stdio_common_vsprintf", "__stdio_common_vsscanf", "__stdio_common_vswprintf",
    "__uncaught_exceptions", "_aligned_free", "_callnewh", "_configthreadlocale", "_crt_atexit", "_free_locale",
    "_isctype_l", "_iswalpha_l", "_iswcntrl_l", "_iswdigit_l", "_iswlower_l", "_iswprint_l", "_iswpunct_l",
    "_iswspace_l", "_iswupper_l", "_iswxdigit_l", "_mbtowc_l", "_register_onexit_function", "_strcoll_l", "_strtoi64_l",
    "_strtoui64_l", "_strxfrm_l", "_tolower_l", "_toupper_l", "_towlower_l", "_towupper_l", "_wcscoll_l", "_wcsxfrm_l",
    "btowc", "mbrlen", "mbrtowc", "mbsrtowcs", "setlocale", "strcpy_s", "strncpy", "strnlen", "strtol", "strtoll",
    "strtoul", "strtoull", "tolower", "toupper", "wcrtomb", "wcrtomb_s", "wctob",
    // These have a sweep of their own.
    "calloc", "malloc", "realloc"};

} // namespace

std::vector<FailingResult> FailingResults(const std::string& function)
{
    std::vector<FailingResult> results;
    for (const Row& row : Failing)
        if (function == row.function)
            results.push_back(row.result);
    return results;
}

bool CannotFail(const std::string& function)
{
    return std::find(std::begin(Infallible), std::end(Infallible), function) != std::end(Infallible);
}

} // namespace OrlindexTest
