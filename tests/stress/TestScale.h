#ifndef ORLINDEX_STRESS_TESTSCALE_H
#define ORLINDEX_STRESS_TESTSCALE_H

#include "support/Count.h"

namespace OrlindexTest {

/// Whether the tests run in their long form (ORLINDEX_LONG=1, which scripts/test.sh --long sets).
bool LongForm();

template <typename Value>
Value ShortOrLong(Value inShortForm, Value inLongForm)
{
    return LongForm() ? inLongForm : inShortForm;
}

} // namespace OrlindexTest

#endif
