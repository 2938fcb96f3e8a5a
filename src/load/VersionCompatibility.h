#ifndef ORLINDEX_LOAD_VERSIONCOMPATIBILITY_H
#define ORLINDEX_LOAD_VERSIONCOMPATIBILITY_H

#include <functional>
#include <string>

#include "base/Log.h"
#include "base/Versions.h"
#include "load/VersionRange.h"

namespace Kestrany::IdentityServices {

class StartObserver;

/// What reading the file needs of its caller.
struct VersionCompatibilityContext
{
    std::function<void(std::wstring& text)> expand; ///< Expands path variables.
    LogSink log;
    StartObserver* observer = nullptr;
};

inline constexpr wchar_t VersionCompatibilityFileName[] = L"TALIXVersionCompatibility.config";

/// A search that failed leaves the bare file name behind, and that never exists: the current directory, where it would
/// be looked up, may be anyone's choice.
bool VersionCompatibilityFileExists(const std::wstring& file);

/// Reads a version compatibility file and chooses, among the elements of the array under `key`, the one of the highest
/// version that serves `sdkVersion`. A bad element is named in the log and skipped. False where none serves.
bool ReadVersionCompatibility(const std::wstring& file, const std::string& key, const VersionParts& sdkVersion,
                              const VersionCompatibilityContext& context, VersionCompatibilityEntry& chosen);

} // namespace Kestrany::IdentityServices

#endif
