#ifndef ORLINDEX_STRESS_PLATFORMFUNCTIONS_H
#define ORLINDEX_STRESS_PLATFORMFUNCTIONS_H

#include <string>
#include <vector>

#include "ImportHooks.h"

namespace OrlindexTest {

/// The ways in which a function fails, by its convention; empty for one that is not in the table.
std::vector<FailingAnswer> FailingAnswers(const std::string& function);

/// Whether the function has no way to fail that its caller could see, or fails elsewhere: allocations have a sweep of
/// their own.
bool CannotFail(const std::string& function);

} // namespace OrlindexTest

#endif
