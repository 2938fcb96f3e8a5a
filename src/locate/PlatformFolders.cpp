#include "locate/PlatformFolders.h"

#include <memory>
#include <windows.h>

#include <objbase.h>
#include <shlobj.h>

#include "base/Paths.h"

namespace Kestrany::IdentityServices {
namespace {

struct CoTaskMemDeleter
{
    void operator()(wchar_t* text) const { CoTaskMemFree(text); }
};

/// A name cut off at the end of the buffer is a failure: its directory part may be another directory.
std::wstring ModuleFileName(HMODULE module)
{
    wchar_t buffer[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(module, buffer, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return {};
    return NormalizePath(std::wstring(buffer, length));
}

} // namespace

std::wstring GetKnownFolderPath(const KNOWNFOLDERID& folderId)
{
    wchar_t* allocated = nullptr;
    const HRESULT result = SHGetKnownFolderPath(folderId, KF_FLAG_DONT_VERIFY | KF_FLAG_NO_ALIAS, nullptr, &allocated);
    const std::unique_ptr<wchar_t, CoTaskMemDeleter> owner(allocated);
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

} // namespace Kestrany::IdentityServices
