// Guards of static variables in functions: 0 before, -1 during, and a growing number after the initialisation. A thread
// whose own number is not smaller knows without the lock that a variable is initialised.
#include <windows.h>

#include <limits.h>

namespace {

constexpr int Untouched = 0;
constexpr int InProgress = -1;

SRWLOCK lock = SRWLOCK_INIT;
CONDITION_VARIABLE changed = CONDITION_VARIABLE_INIT;

} // namespace

extern "C" {

int _Init_global_epoch = INT_MIN;
__declspec(thread) int _Init_thread_epoch = INT_MIN;

void __cdecl _Init_thread_header(int* guard)
{
    AcquireSRWLockExclusive(&lock);
    while (*guard == InProgress)
        SleepConditionVariableSRW(&changed, &lock, INFINITE, 0);
    if (*guard == Untouched)
        *guard = InProgress;
    else
        _Init_thread_epoch = _Init_global_epoch;
    ReleaseSRWLockExclusive(&lock);
}

void __cdecl _Init_thread_footer(int* guard)
{
    AcquireSRWLockExclusive(&lock);
    *guard = ++_Init_global_epoch;
    _Init_thread_epoch = _Init_global_epoch;
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&changed);
}

/// The initialisation threw an exception: the next thread tries again.
void __cdecl _Init_thread_abort(int* guard)
{
    AcquireSRWLockExclusive(&lock);
    *guard = Untouched;
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&changed);
}
}
