#ifndef ORLINDEX_DOCTOR_TESTS_SNAPSHOT_H
#define ORLINDEX_DOCTOR_TESTS_SNAPSHOT_H

#include <filesystem>
#include <map>
#include <string>

namespace OrlindexTest {

/// Names, each with data that shows a change: two equal snapshots mean that nothing changed.
using Snapshot = std::map<std::wstring, std::wstring>;

/// Every key and value below HKEY_LOCAL_MACHINE\SOFTWARE and HKEY_CURRENT_USER, except registered classes and fonts.
Snapshot SnapshotOfRegistry();

/// Every file and folder below a folder, with size and time of its last change.
Snapshot SnapshotOfFiles(const std::filesystem::path& folder);

/// The names in which two snapshots differ.
std::wstring Differences(const Snapshot& before, const Snapshot& after);

} // namespace OrlindexTest

#endif
