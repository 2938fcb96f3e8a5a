#ifndef ORLINDEX_BENCH_STOPWATCH_H
#define ORLINDEX_BENCH_STOPWATCH_H

#include <windows.h>

namespace OrlindexBench {

/// Nanoseconds since a fixed time before the process started.
inline double Now()
{
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * (1e9 / static_cast<double>(frequency.QuadPart));
}

/// Measures the nanoseconds since its creation.
class Stopwatch
{
public:
    double Nanoseconds() const { return Now() - began_; }

private:
    double began_ = Now();
};

} // namespace OrlindexBench

#endif
