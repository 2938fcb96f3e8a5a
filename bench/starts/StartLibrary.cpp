// Starts the library once, in a new process, and reports the time of each step. The platform functions that the library
// calls identify the steps: each import of Orlindex.dll is replaced by one that measures the time.

#include <cstdio>
#include <windows.h>

#include <shlwapi.h>
#include <softpub.h>
#include <wintrust.h>

#include "common/Stopwatch.h"
#include "orlindex/talix.h"
#include "starts/StartFigures.h"
#include "support/ImportPatch.h"

// Not every user-mode header declares these functions; only their types are needed here.
extern "C" LONG NTAPI NtQueryInformationFile(HANDLE, void*, void*, ULONG, int);
extern "C" LONG NTAPI NtQueryVirtualMemory(HANDLE, const void*, int, void*, SIZE_T, SIZE_T*);

namespace {

using namespace OrlindexBench;

StartFigures figures;

/// Replaces one import for the lifetime of the object. `step` receives its time.
template <class Import, double StartFigures::* step>
class TimedImport
{
public:
    TimedImport()
        : double_([](auto... arguments) {
              const Stopwatch watch;
              const auto result = OrlindexTest::ImportDouble<Import>::Original(arguments...);
              figures.*step += watch.Nanoseconds();
              return result;
          })
    {
    }

private:
    OrlindexTest::ImportDouble<Import> double_;
};

#define ORLINDEX_TIMED_IMPORT(function, step)     \
    struct function##Import                       \
    {                                             \
        static constexpr char Name[] = #function; \
        using Type = decltype(function);          \
    };                                            \
    const TimedImport<function##Import, &StartFigures::step> function##Timed

struct TimedImports
{
    ORLINDEX_TIMED_IMPORT(WinVerifyTrust, trust);
    ORLINDEX_TIMED_IMPORT(WTHelperProvDataFromStateData, trust);
    ORLINDEX_TIMED_IMPORT(WTHelperGetProvSignerFromChain, trust);
    ORLINDEX_TIMED_IMPORT(WTHelperGetProvCertFromChain, trust);
    ORLINDEX_TIMED_IMPORT(CryptHashCertificate2, trust);
    ORLINDEX_TIMED_IMPORT(CertGetNameStringA, trust);
    ORLINDEX_TIMED_IMPORT(CertGetNameStringW, trust);

    ORLINDEX_TIMED_IMPORT(LoadLibraryW, load);
    ORLINDEX_TIMED_IMPORT(LoadLibraryExW, load);

    ORLINDEX_TIMED_IMPORT(RegOpenKeyExW, registry);
    ORLINDEX_TIMED_IMPORT(RegQueryInfoKeyW, registry);
    ORLINDEX_TIMED_IMPORT(RegEnumKeyExW, registry);
    ORLINDEX_TIMED_IMPORT(RegQueryValueExW, registry);
    ORLINDEX_TIMED_IMPORT(RegCloseKey, registry);

    ORLINDEX_TIMED_IMPORT(CreateFileW, files);
    ORLINDEX_TIMED_IMPORT(CloseHandle, files);
    ORLINDEX_TIMED_IMPORT(ReadFile, files);
    ORLINDEX_TIMED_IMPORT(GetFileType, files);
    ORLINDEX_TIMED_IMPORT(GetFileSizeEx, files);
    ORLINDEX_TIMED_IMPORT(GetFileAttributesW, files);
    ORLINDEX_TIMED_IMPORT(GetFileInformationByHandle, files);
    ORLINDEX_TIMED_IMPORT(GetFinalPathNameByHandleW, files);
    ORLINDEX_TIMED_IMPORT(PathFileExistsW, files);
    ORLINDEX_TIMED_IMPORT(NtQueryInformationFile, files);
    ORLINDEX_TIMED_IMPORT(NtQueryVirtualMemory, files);

    ORLINDEX_TIMED_IMPORT(AllocateAndInitializeSid, account);
    ORLINDEX_TIMED_IMPORT(CheckTokenMembership, account);
};

} // namespace

int main() // NOLINT(bugprone-exception-escape): a benchmark that fails ends its process
{
    const TimedImports timedImports;
    const Stopwatch watch;
    const talix_status_code result = talix_init();
    figures.total = watch.Nanoseconds();
    if (result != IdSuccess)
    {
        std::fprintf(stderr, "start_library: the library did not start, result %d\n", static_cast<int>(result));
        return 1;
    }
    WriteStartFigures(figures);
    return 0;
}
