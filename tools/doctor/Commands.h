#ifndef ORLINDEX_DOCTOR_COMMANDS_H
#define ORLINDEX_DOCTOR_COMMANDS_H

#include <string>

#include "Options.h"
#include "Report.h"

namespace Orlindex::Doctor {

// Paths are absolute.

/// Retraces the start of a host in the folder `host`.
Verdict RunStart(const Options& options, const std::wstring& host, Report& report);

/// Checks the plugin module `module` against the contract.
Verdict RunCheck(const Options& options, const std::wstring& host, const std::wstring& module, Report& report);

} // namespace Orlindex::Doctor

#endif
