#ifndef ORLINDEX_DOCTOR_LIBRARYDIAGNOSIS_H
#define ORLINDEX_DOCTOR_LIBRARYDIAGNOSIS_H

#include <optional>

#include "StartFacts.h"

namespace Orlindex::Doctor {

/// The failure that the host's library is. A host that has no such file in its folder may find it elsewhere.
std::optional<Verdict> OfLibrary(const StartFacts& facts);

/// Whether a host with that library would do what this tool does.
bool AnswersForLibrary(const StartFacts& facts);

/// What takes the place of a verdict that holds by this tool's root and signers only, where the library has others.
std::optional<Verdict> OfOtherTrust(const StartFacts& facts, const Verdict& verdict);

} // namespace Orlindex::Doctor

#endif
