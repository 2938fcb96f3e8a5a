#ifndef ORLINDEX_BENCH_STOPWATCH_H
#define ORLINDEX_BENCH_STOPWATCH_H

#include <windows.h>

namespace OrlindexBench {

/// Nanoseconds since some moment before the process.
inline double Now()
{
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * (1e9 / static_cast<double>(frequency.QuadPart));
}

/// Nanoseconds since its creation.
class Stopwatch
{
public:
    double Nanoseconds() const { return Now() - began_; }

private:
    double began_ = Now();
};

} // namespace OrlindexBench

#endif
