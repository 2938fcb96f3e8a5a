// `provider` in a build without the sign-in agent, whose code it uses.

#include "Commands.h"

namespace Orlindex::Doctor {

Diagnosis RunProvider(const Options&, const std::wstring&, Report&)
{
    throw UsageError("provider is left out: this build has no sign-in agent");
}

} // namespace Orlindex::Doctor
