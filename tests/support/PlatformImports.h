#ifndef ORLINDEX_SUPPORT_PLATFORMIMPORTS_H
#define ORLINDEX_SUPPORT_PLATFORMIMPORTS_H

#include <cstddef>

#include <windows.h>

#include <shlobj.h>
#include <softpub.h>
#include <wincrypt.h>
#include <wintrust.h>

#include "ImportPatch.h"

namespace OrlindexTest {

// The functions that tests replace in the import table. `<Name>Double fails([](...) { ... });` replaces one while the
// object lives. Each line gives the name in the code, the name in the import table, and the function's type.

#define ORLINDEX_IMPORT(name, function, ...)      \
    struct name##Import                           \
    {                                             \
        static constexpr char Name[] = #function; \
        using Type = __VA_ARGS__;                 \
    };                                            \
    using name##Double = ImportDouble<name##Import>

// clang-format off: one function a line.

// Files. The last two give the path of the file that a module was mapped from; no public header declares them.
ORLINDEX_IMPORT(CreateFile, CreateFileW, decltype(::CreateFileW));
ORLINDEX_IMPORT(GetFileAttributes, GetFileAttributesW, decltype(::GetFileAttributesW));
ORLINDEX_IMPORT(GetFileInformationByHandle, GetFileInformationByHandle, decltype(::GetFileInformationByHandle));
ORLINDEX_IMPORT(GetFileSizeEx, GetFileSizeEx, decltype(::GetFileSizeEx));
ORLINDEX_IMPORT(GetFinalPathNameByHandle, GetFinalPathNameByHandleW, decltype(::GetFinalPathNameByHandleW));
ORLINDEX_IMPORT(PathFileExists, PathFileExistsW, BOOL(LPCWSTR));
ORLINDEX_IMPORT(ReadFile, ReadFile, decltype(::ReadFile));
ORLINDEX_IMPORT(SHGetKnownFolderPath, SHGetKnownFolderPath, decltype(::SHGetKnownFolderPath));
ORLINDEX_IMPORT(NtQueryInformationFile, NtQueryInformationFile, LONG(HANDLE, void*, void*, ULONG, int));
ORLINDEX_IMPORT(NtQueryVirtualMemory, NtQueryVirtualMemory, LONG(HANDLE, const void*, int, void*, SIZE_T, SIZE_T*));

// Modules.
ORLINDEX_IMPORT(GetDllDirectory, GetDllDirectoryW, decltype(::GetDllDirectoryW));
ORLINDEX_IMPORT(GetModuleFileName, GetModuleFileNameW, decltype(::GetModuleFileNameW));
ORLINDEX_IMPORT(GetModuleHandle, GetModuleHandleW, decltype(::GetModuleHandleW));
ORLINDEX_IMPORT(GetProcAddress, GetProcAddress, decltype(::GetProcAddress));
ORLINDEX_IMPORT(LoadLibrary, LoadLibraryW, decltype(::LoadLibraryW));
ORLINDEX_IMPORT(LoadLibraryEx, LoadLibraryExW, decltype(::LoadLibraryExW));
ORLINDEX_IMPORT(SetDllDirectory, SetDllDirectoryW, decltype(::SetDllDirectoryW));

// Signatures.
ORLINDEX_IMPORT(CertGetNameStringA, CertGetNameStringA, DWORD(PCCERT_CONTEXT, DWORD, DWORD, void*, LPSTR, DWORD));
ORLINDEX_IMPORT(CertGetNameStringW, CertGetNameStringW, DWORD(PCCERT_CONTEXT, DWORD, DWORD, void*, LPWSTR, DWORD));
ORLINDEX_IMPORT(CryptHashCertificate2, CryptHashCertificate2, BOOL(LPCWSTR, DWORD, void*, const BYTE*, DWORD, BYTE*, DWORD*));
ORLINDEX_IMPORT(WinVerifyTrust, WinVerifyTrust, LONG(HWND, GUID*, LPVOID));
ORLINDEX_IMPORT(WTHelperGetProvCertFromChain, WTHelperGetProvCertFromChain, CRYPT_PROVIDER_CERT*(CRYPT_PROVIDER_SGNR*, DWORD));
ORLINDEX_IMPORT(WTHelperGetProvSignerFromChain, WTHelperGetProvSignerFromChain, CRYPT_PROVIDER_SGNR*(CRYPT_PROVIDER_DATA*, DWORD, BOOL, DWORD));
ORLINDEX_IMPORT(WTHelperProvDataFromStateData, WTHelperProvDataFromStateData, CRYPT_PROVIDER_DATA*(HANDLE));

// Registry.
ORLINDEX_IMPORT(RegCloseKey, RegCloseKey, decltype(::RegCloseKey));
ORLINDEX_IMPORT(RegEnumKeyEx, RegEnumKeyExW, decltype(::RegEnumKeyExW));
ORLINDEX_IMPORT(RegOpenKeyEx, RegOpenKeyExW, decltype(::RegOpenKeyExW));

// Process, user, locks.
ORLINDEX_IMPORT(AllocateAndInitializeSid, AllocateAndInitializeSid, decltype(::AllocateAndInitializeSid));
ORLINDEX_IMPORT(CheckTokenMembership, CheckTokenMembership, decltype(::CheckTokenMembership));
ORLINDEX_IMPORT(EnterCriticalSection, EnterCriticalSection, decltype(::EnterCriticalSection));
ORLINDEX_IMPORT(FreeSid, FreeSid, decltype(::FreeSid));
ORLINDEX_IMPORT(IsWow64Process, IsWow64Process, decltype(::IsWow64Process));

// What std::mutex calls while it is contended, by the standard library. The first argument tells which mutex it is.
#if defined(_LIBCPP_VERSION)
ORLINDEX_IMPORT(LockMutex, AcquireSRWLockExclusive, decltype(::AcquireSRWLockExclusive));
ORLINDEX_IMPORT(UnlockMutex, ReleaseSRWLockExclusive, decltype(::ReleaseSRWLockExclusive));
#elif defined(_MSC_VER)
ORLINDEX_IMPORT(LockMutex, _Mtx_lock, int(void*));
ORLINDEX_IMPORT(UnlockMutex, _Mtx_unlock, int(void*));
#else
ORLINDEX_IMPORT(LockMutex, WaitForSingleObject, decltype(::WaitForSingleObject));
ORLINDEX_IMPORT(UnlockMutex, SetEvent, decltype(::SetEvent));
#endif

// Texts. The last argument of FormatMessageW is a va_list*.
ORLINDEX_IMPORT(FormatMessage, FormatMessageW, DWORD(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, void*));
ORLINDEX_IMPORT(MultiByteToWideChar, MultiByteToWideChar, decltype(::MultiByteToWideChar));
ORLINDEX_IMPORT(WideCharToMultiByte, WideCharToMultiByte, decltype(::WideCharToMultiByte));

// Memory.
ORLINDEX_IMPORT(Calloc, calloc, void*(std::size_t, std::size_t));
ORLINDEX_IMPORT(Free, free, void(void*));
ORLINDEX_IMPORT(LocalFree, LocalFree, decltype(::LocalFree));
ORLINDEX_IMPORT(Malloc, malloc, void*(std::size_t));
ORLINDEX_IMPORT(Realloc, realloc, void*(void*, std::size_t));

// clang-format on

#undef ORLINDEX_IMPORT

} // namespace OrlindexTest

#endif
