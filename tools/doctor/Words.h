#ifndef ORLINDEX_DOCTOR_WORDS_H
#define ORLINDEX_DOCTOR_WORDS_H

#include <string>
#include <vector>

#include "StartFacts.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

// What the findings of a start are called: words of fixed sets for programs, sentences for people. All UTF-8.

std::string Quoted(const std::wstring& text);
/// With commas.
std::string Joined(const std::vector<std::string>& texts);

/// The platform's words for an error, with its number.
std::string ErrorWords(unsigned long error);
/// The same for the answer of a signature verification, with its usual name.
std::string TrustAnswerWords(long answer);

std::string FileWords(Ids::StartUpFile file);
const char* OriginWords(Ids::DirectoryOrigin origin);
const char* StateName(Ids::DirectoryState state);
std::string StateWords(Ids::DirectoryState state, const std::string& fileName);
const char* DefectName(Ids::EntryDefect defect);
const char* DefectWords(Ids::EntryDefect defect);
const char* PathDefectWords(Ids::ModulePathDefect defect);
const char* BitsWords(Machine machine); ///< "64-bit", "32-bit"
/// What an entry's range says of this version of the library: "min 1.12, max 2".
std::string RangeWords(const Ids::VersionCompatibilityEntry& entry);
const char* MismatchName(Ids::RangeMatch answer);
const char* TrustResultName(Ids::BinaryTrustResult result);
const char* LoadStepName(Ids::LoadStep step);
const char* LoadStepWords(Ids::LoadStep step);
const char* PluginObjectWords(Ids::PluginObject object);
std::string JsonErrorWords(const Ids::JsonError& error);
std::string DigestWords(const Ids::Sha256& digest);
/// Date and time, UTC.
std::string TimeWords(const FILETIME& time);
/// How an entry is spoken of: by its place in the file.
std::string EntryPlace(const Ids::VersionCompatibilityEntry& entry);

} // namespace Orlindex::Doctor

#endif
