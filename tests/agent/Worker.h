#ifndef AGENT_TESTS_WORKER_H
#define AGENT_TESTS_WORKER_H

#include <string>

namespace Kestrany::Agent {

/// Event that a worker sets after each round.
std::wstring ProgressEventName(const std::string& meeting);

/// A host that signs in and reads its user and token, round after round, until it is told to leave, whatever happens to
/// the server. False, with a message, at the first failure, and at the first result that contradicts an earlier one.
bool RunWorker(const std::string& meeting, unsigned int seed);

} // namespace Kestrany::Agent

#endif
