#ifndef ORLINDEX_FUZZ_REQUIRE_H
#define ORLINDEX_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

namespace OrlindexTest {

/// Aborts the process if `holds` is false: this is how a fuzzer detects an input that breaks a property.
inline void Require(bool holds, const char* property)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}

} // namespace OrlindexTest

#endif
