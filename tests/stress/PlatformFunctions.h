#ifndef ORLINDEX_STRESS_PLATFORMFUNCTIONS_H
#define ORLINDEX_STRESS_PLATFORMFUNCTIONS_H

#include <string>
#include <vector>

#include "ImportHooks.h"

namespace OrlindexTest {

/// The ways in which a function fails, by its convention; empty if it is not in the table.
std::vector<FailingResult> FailingResults(const std::string& function);

/// Whether the function cannot fail in a way that its caller could see, or is tested elsewhere: allocations have a
/// sweep of their own.
bool CannotFail(const std::string& function);

} // namespace OrlindexTest

#endif
