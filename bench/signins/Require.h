#ifndef ORLINDEX_BENCH_SIGNINS_REQUIRE_H
#define ORLINDEX_BENCH_SIGNINS_REQUIRE_H

#include <stdexcept>

namespace OrlindexBench {

inline void Require(bool condition, const char* what)
{
    if (!condition)
        throw std::runtime_error(what);
}

} // namespace OrlindexBench

#endif
