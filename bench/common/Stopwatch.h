#ifndef ORLINDEX_BENCH_STOPWATCH_H
#define ORLINDEX_BENCH_STOPWATCH_H

#include <windows.h>

namespace OrlindexBench {

/// Nanoseconds since its creation.
class Stopwatch
{
public:
    Stopwatch() { QueryPerformanceCounter(&began_); }

    double Nanoseconds() const
    {
        LARGE_INTEGER now;
        QueryPerformanceCounter(&now);
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        return static_cast<double>(now.QuadPart - began_.QuadPart) * 1e9 / static_cast<double>(frequency.QuadPart);
    }

private:
    LARGE_INTEGER began_;
};

} // namespace OrlindexBench

#endif
