#include "base/Platform.h"

#include <windows.h>

#include <shlobj.h>

#include "base/Handles.h"
#include "base/Paths.h"

namespace Kestrany::IdentityServices {
namespace {

/// A truncated name counts as a failure: its directory part may name another directory.
std::wstring ModuleFileName(HMODULE module)
{
    wchar_t buffer[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(module, buffer, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return {};
    return NormalizePath(std::wstring(buffer, length));
}

struct SidDeleter
{
    void operator()(void* sid) const { FreeSid(sid); }
};

using Sid = std::unique_ptr<void, SidDeleter>;

Sid LocalSystemSid()
{
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID sid = nullptr;
    if (!AllocateAndInitializeSid(&authority, 1, SECURITY_LOCAL_SYSTEM_RID, 0, 0, 0, 0, 0, 0, 0, &sid))
        return nullptr;
    return Sid(sid);
}

} // namespace

std::wstring GetKnownFolderPath(const KNOWNFOLDERID& folderId)
{
    wchar_t* allocated = nullptr;
    const HRESULT result = SHGetKnownFolderPath(folderId, KF_FLAG_DONT_VERIFY | KF_FLAG_NO_ALIAS, nullptr, &allocated);
    const TaskMemory<wchar_t> owner(allocated);
    // not covered: The platform never succeeds without allocating.
    return SUCCEEDED(result) && allocated ? std::wstring(allocated) : std::wstring();
}

std::wstring GetExeDirPath()
{
    return ParentPath(ModuleFileName(nullptr));
}

std::wstring GetModuleFilePath(const std::wstring& moduleName)
{
    const HMODULE module = GetModuleHandleW(moduleName.c_str());
    return module ? ModuleFileName(module) : std::wstring();
}

std::wstring GetModuleDirPath(const std::wstring& moduleName)
{
    return ParentPath(GetModuleFilePath(moduleName));
}

bool IsWow64()
{
    BOOL wow64 = FALSE;
    return IsWow64Process(GetCurrentProcess(), &wow64) && wow64;
}

std::wstring GetSystemErrorText(unsigned long code)
{
    constexpr DWORD neutralLanguage = 0x400;
    wchar_t* allocated = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, neutralLanguage,
                   reinterpret_cast<wchar_t*>(&allocated), 0, nullptr);
    const LocalMemory<wchar_t> owner(allocated);
    if (allocated && *allocated)
        return allocated;
    // This one text is fixed, for systems that have none.
    return code == ERROR_MOD_NOT_FOUND ? L"The specified module could not be found." : L"";
}

bool RunsAsLocalSystem()
{
    const Sid localSystem = LocalSystemSid();
    BOOL member = FALSE;
    return localSystem && CheckTokenMembership(nullptr, localSystem.get(), &member) && member;
}

} // namespace Kestrany::IdentityServices
