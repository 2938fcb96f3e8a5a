#include "Effort.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace OrlindexTest {

bool LongForm()
{
    const char* const value = std::getenv("ORLINDEX_LONG");
    return value != nullptr && std::string_view(value) == "1";
}

void PrintCount(const std::string& name, long long value)
{
    std::printf("count: %s = %lld\n", name.c_str(), value);
    std::fflush(stdout);
}

} // namespace OrlindexTest
