#ifndef ORLINDEX_STRESS_AFTERMATH_H
#define ORLINDEX_STRESS_AFTERMATH_H

#include <chrono>
#include <cstdint>
#include <functional>

#include "support/Patience.h"

namespace OrlindexTest {

/// Whether a task ends in time on a thread of its own. Where it does not, that thread stays behind.
bool EndsInTime(const std::function<void()>& task, std::chrono::seconds limit = Patience);

/// Expects that no lock of the library is held: another thread starts the library, makes a call, and stops it.
void ExpectLocksAreFree();

/// A handle's value is its place in the process's table, and new ones take the lowest free place. This is the place of
/// the last of so many new ones that no gap is left below: with a handle left open it lies higher. Wine does not count
/// a process's handles.
std::intptr_t NextHandle();

} // namespace OrlindexTest

#endif
