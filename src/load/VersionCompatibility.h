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
    bool fileExists; ///< False also for the bare name that a failed search leaves behind.
    std::function<void(std::wstring& text)> expand; ///< Expands path variables.
    LogSink log;
    StartObserver* observer = nullptr;
};

inline constexpr wchar_t VersionCompatibilityFileName[] = L"TALIXVersionCompatibility.config";

/// Reads a version compatibility file and chooses, among the elements of the array under `key`, the one of the highest
/// version that serves `sdkVersion`. A bad element is named in the log and skipped. False if none serves.
bool ReadVersionCompatibility(const std::wstring& file, const std::string& key, const VersionParts& sdkVersion,
                              const VersionCompatibilityContext& context, VersionCompatibilityEntry& chosen);

} // namespace Kestrany::IdentityServices

#endif
