#ifndef ORLINDEX_STRESS_LEAKCHECK_H
#define ORLINDEX_STRESS_LEAKCHECK_H

#include <chrono>
#include <functional>

#include "support/Patience.h"

namespace OrlindexTest {

/// Whether a task ends in time on a thread of its own. If not, that thread keeps running.
bool EndsInTime(const std::function<void()>& task, std::chrono::seconds limit = Patience);

/// Expects that no lock of the library is held: another thread starts the library, makes a call, and stops it.
void ExpectLocksAreFree();

} // namespace OrlindexTest

#endif
