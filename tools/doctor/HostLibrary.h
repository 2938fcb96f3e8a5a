#ifndef ORLINDEX_DOCTOR_HOSTLIBRARY_H
#define ORLINDEX_DOCTOR_HOSTLIBRARY_H

#include <string>

#include "Report.h"
#include "StartFacts.h"

namespace Orlindex::Doctor {

/// Looks at the library beside the host, which is the one that will run there: how far this tool, whose steps are those
/// of its own build, answers for it.
void CheckHostLibrary(const std::wstring& host, Report& report, StartFacts& facts);

} // namespace Orlindex::Doctor

#endif
