#ifndef ORLINDEX_SUPPORT_COUNT_H
#define ORLINDEX_SUPPORT_COUNT_H

#include <string>

namespace OrlindexTest {

/// Prints how much a test did. scripts/test.sh collects these lines and adds up those with the same name.
void PrintCount(const std::string& name, long long value);

} // namespace OrlindexTest

#endif
