#include "Count.h"

#include <cstdio>

namespace OrlindexTest {

void PrintCount(const std::string& name, long long value)
{
    std::printf("count: %s = %lld\n", name.c_str(), value);
    std::fflush(stdout);
}

} // namespace OrlindexTest
