#ifndef ORLINDEX_STRESS_EFFORT_H
#define ORLINDEX_STRESS_EFFORT_H

#include "support/Count.h"

namespace OrlindexTest {

/// Whether the long form of the tests was asked for (ORLINDEX_LONG=1, which scripts/test.sh --long sets).
bool LongForm();

template <typename Value>
Value ShortOrLong(Value inShortForm, Value inLongForm)
{
    return LongForm() ? inLongForm : inShortForm;
}

} // namespace OrlindexTest

#endif
