#ifndef ORLINDEX_DOCTOR_TEXTS_H
#define ORLINDEX_DOCTOR_TEXTS_H

#include <string>
#include <vector>

#include "StartUpFacts.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

// The texts of findings, in UTF-8. ...Name is a word of a fixed set, for programs; ...Text is for people.

std::string Quoted(const std::wstring& text);
/// The texts, separated by commas.
std::string Joined(const std::vector<std::string>& texts);

/// The platform's text for an error code, with the code.
std::string ErrorText(unsigned long error);
/// The same for a result of WinVerifyTrust, with the name of its constant.
std::string VerifyResultText(long result);

std::string FileTitle(Ids::StartUpFile file);
const char* OriginText(Ids::DirectoryOrigin origin);
const char* StateName(Ids::DirectoryState state);
std::string StateText(Ids::DirectoryState state, const std::string& fileName);
const char* DefectName(Ids::EntryDefect defect);
const char* DefectText(Ids::EntryDefect defect);
const char* PathDefectText(Ids::ModulePathDefect defect);
const char* BitsText(Machine machine); ///< "64-bit", "32-bit"
/// The versions of the library that an entry serves: "min 1.12, max 2".
std::string RangeText(const Ids::VersionCompatibilityEntry& entry);
const char* MismatchName(Ids::RangeMatch mismatch);
const char* TrustResultName(Ids::BinaryTrustResult result);
const char* LoadStepName(Ids::LoadStep step);
const char* LoadStepText(Ids::LoadStep step);
const char* PluginObjectText(Ids::PluginObject object);
std::string JsonErrorText(const Ids::JsonError& error);
std::string DigestText(const Ids::Sha256& digest);
/// Date and time in UTC: "2026-01-31T12:00:00Z".
std::string TimeText(const FILETIME& time);
/// The place of an entry in the file: "ssoClientPlugin[0]".
std::string EntryPlace(const Ids::VersionCompatibilityEntry& entry);

} // namespace Orlindex::Doctor

#endif
