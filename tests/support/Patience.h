#ifndef ORLINDEX_TESTS_SUPPORT_PATIENCE_H
#define ORLINDEX_TESTS_SUPPORT_PATIENCE_H

#include <chrono>

namespace OrlindexTest {

/// How long a test waits for an event that must happen. Only a broken product reaches the limit: a busy machine takes
/// seconds for what takes an idle one milliseconds.
inline constexpr std::chrono::minutes Patience(3);

/// The same in milliseconds, for the platform's functions.
inline constexpr unsigned long PatienceMilliseconds = std::chrono::milliseconds(Patience).count();

} // namespace OrlindexTest

#endif
