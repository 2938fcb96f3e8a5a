#ifndef ORLINDEX_DOCTOR_HOSTLIBRARY_H
#define ORLINDEX_DOCTOR_HOSTLIBRARY_H

#include <optional>
#include <string>

#include "Report.h"
#include "StartUpFacts.h"

namespace Orlindex::Doctor {

// The library beside the host. It is the one that runs there, and the tool's own steps are those of its own build.

/// Compares the library's version and trust with the tool's, and inspects its file. Fills facts.library and
/// facts.libraryTrust.
void CheckHostLibrary(const std::wstring& host, Report& report, StartUpFacts& facts);

/// Whether the tool's result is valid for a host with that library: they trust the same root and signers, as far as the
/// library says, and are for the same kind of process.
bool AppliesToLibrary(const StartUpFacts& facts);

/// Why the host's library cannot be loaded; nullopt if no reason is known, or if the host's folder holds no library:
/// the host may find it elsewhere.
std::optional<Diagnosis> DiagnoseLibrary(const StartUpFacts& facts);

/// What replaces a diagnosis that is only valid for the tool's own root and signers; nullopt if the library has the
/// same ones, or if the diagnosis does not depend on them.
std::optional<Diagnosis> DiagnoseOtherTrust(const StartUpFacts& facts, const Diagnosis& diagnosis);

} // namespace Orlindex::Doctor

#endif
