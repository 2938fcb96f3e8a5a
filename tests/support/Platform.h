#ifndef ORLINDEX_SUPPORT_PLATFORM_H
#define ORLINDEX_SUPPORT_PLATFORM_H

#include <cstdint>
#include <string>

#include <windows.h>

namespace OrlindexTest {

// The tests run on Windows and under Wine. This is the only place that knows the differences.

bool RunsUnderWine();

/// Grows if this process has left a handle open in between. Other threads must not open or close handles meanwhile.
std::intptr_t MeasureOpenHandles();

/// CreateProcessW with inherited handles. Tries again where the platform fails for no reason of the caller's. Returns
/// false, with the last error, if it fails for good.
bool StartProcess(const std::wstring& executable, const std::wstring& command, DWORD flags, const wchar_t* directory,
                  STARTUPINFOW& startup, PROCESS_INFORMATION& started);

/// How many modules with a damaged certificate may crash the platform's own verification in one test.
int MostCrashesOfVerification();

/// The exit code with which the C runtime ends a process after a bad argument of its bounded copy.
DWORD ExitCodeOfInvalidParameter();

/// The number of a top-level window on the display in memory of the tests, for pictures. 0 if it is not shown there.
std::uint64_t NumberOnDisplay(HWND window);

/// Ends this process at once with the exception's code when no frame handles an exception, as Windows does.
void EndAtUnhandledExceptions();

} // namespace OrlindexTest

#endif
