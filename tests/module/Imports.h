#ifndef ORLINDEX_MODULE_IMPORTS_H
#define ORLINDEX_MODULE_IMPORTS_H

#include <functional>
#include <string>
#include <vector>
#include <windows.h>

#include "support/ImportPatch.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

/// The module whose imports these tests replace: the library's sources are linked into the test itself.
inline HMODULE Executable()
{
    return GetModuleHandleW(nullptr);
}

/// Makes this process look like a 32-bit one on 64-bit Windows.
class Wow64Process
{
    IsWow64ProcessDouble query_{[](HANDLE process, BOOL* wow64) -> BOOL {
                                    *wow64 = process == GetCurrentProcess();
                                    return TRUE;
                                },
                                Executable()};
};

/// Makes IsWow64Process fail, with a misleading value in its output.
class FailingWow64Query
{
    IsWow64ProcessDouble query_{[](HANDLE, BOOL* wow64) -> BOOL {
                                    *wow64 = TRUE;
                                    return FALSE;
                                },
                                Executable()};
};

/// Records the access with which registry keys are opened, and may refuse to open them.
class RegistryOpenings
{
public:
    /// Returns the status for an attempt to open a key; ERROR_SUCCESS passes the call on to the platform.
    using Judge = std::function<LSTATUS(const std::wstring& path, REGSAM access)>;

    explicit RegistryOpenings(Judge judge)
        : openings_(
              [this, judge = std::move(judge)](HKEY root, const wchar_t* path, DWORD options, REGSAM access,
                                               HKEY* key) -> LSTATUS {
                  accesses_.push_back(access);
                  const LSTATUS status = judge(path, access);
                  return status == ERROR_SUCCESS ? RegOpenKeyExDouble::Original(root, path, options, access, key)
                                                 : status;
              },
              Executable())
    {
    }

    const std::vector<REGSAM>& Accesses() const { return accesses_; }

private:
    std::vector<REGSAM> accesses_;
    RegOpenKeyExDouble openings_;
};

// The access with which the library opens keys, as numbers: KEY_READ and KEY_QUERY_VALUE, alone and with the 64-bit
// view.
inline constexpr REGSAM ReadAccess = 131097;
inline constexpr REGSAM ReadAccess64 = 131353;
inline constexpr REGSAM QueryAccess = 1;
inline constexpr REGSAM QueryAccess64 = 257;

} // namespace OrlindexTest

#endif
