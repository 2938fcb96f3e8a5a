#include "TestScale.h"

#include <cstdlib>
#include <string_view>

namespace OrlindexTest {

bool LongForm()
{
    const char* const value = std::getenv("ORLINDEX_LONG");
    return value != nullptr && std::string_view(value) == "1";
}

} // namespace OrlindexTest
