#ifndef ORLINDEX_STRESS_EFFORT_H
#define ORLINDEX_STRESS_EFFORT_H

#include <string>

namespace OrlindexTest {

/// Whether the long form of the tests was asked for (ORLINDEX_LONG=1, which scripts/test.sh --long sets).
bool LongForm();

template <typename Value>
Value ShortOrLong(Value inShortForm, Value inLongForm)
{
    return LongForm() ? inLongForm : inShortForm;
}

/// Prints how much a test did. scripts/test.sh gathers these lines.
void PrintCount(const std::string& name, long long value);

} // namespace OrlindexTest

#endif
