#ifndef ORLINDEX_STRESS_LEAKCHECK_H
#define ORLINDEX_STRESS_LEAKCHECK_H

#include <chrono>
#include <cstdint>
#include <functional>

#include "support/Patience.h"

namespace OrlindexTest {

/// Whether a task ends in time on a thread of its own. If not, that thread keeps running.
bool EndsInTime(const std::function<void()>& task, std::chrono::seconds limit = Patience);

/// Expects that no lock of the library is held: another thread starts the library, makes a call, and stops it.
void ExpectLocksAreFree();

/// Finds open handles, as Wine does not count those of a process. The value of a handle is its index in the process's
/// table, and a new one takes the lowest free index. This makes so many that no gap is left below, and returns the last
/// one: it is higher if a handle was left open.
std::intptr_t NextHandle();

} // namespace OrlindexTest

#endif
