#ifndef ORLINDEX_TESTS_SUPPORT_PATIENCE_H
#define ORLINDEX_TESTS_SUPPORT_PATIENCE_H

#include <chrono>

namespace OrlindexTest {

/// How long a test waits for what must come. Only a broken product uses it up: a machine that is busy with other work
/// takes seconds for what takes milliseconds on an idle one.
inline constexpr std::chrono::minutes Patience(3);

/// The same for the platform's waits, in milliseconds.
inline constexpr unsigned long PatienceMilliseconds = std::chrono::milliseconds(Patience).count();

} // namespace OrlindexTest

#endif
