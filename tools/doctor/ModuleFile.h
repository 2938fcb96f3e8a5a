#ifndef ORLINDEX_DOCTOR_MODULEFILE_H
#define ORLINDEX_DOCTOR_MODULEFILE_H

#include <string>
#include <vector>

#include "Report.h"
#include "StartFacts.h"

namespace Orlindex::Doctor {

/// Looks at a plugin module's file as data: whether it is a module for this kind of process, what it exports, and its
/// version record. Nothing of it runs.
void InspectModuleFile(const std::wstring& path, Report& report, ModuleFacts& facts);

/// Looks at the host's library the same way: whether such a process can load such a file. It must exist.
void InspectLibraryFile(const std::wstring& path, Report& report, ModuleFacts& facts);

/// The libraries that a module names and that are neither beside it, nor beside the host, nor where the system looks.
std::vector<std::string> FindMissingLibraries(const std::wstring& path, const std::wstring& hostDirectory);

/// The libraries that a module names and that lie neither beside it nor beside the host, but beside this tool: the
/// process that loads the plugin finds them there, and a host does not.
std::vector<std::string> FindLibrariesOfTool(const std::wstring& path, const std::wstring& hostDirectory);

} // namespace Orlindex::Doctor

#endif
