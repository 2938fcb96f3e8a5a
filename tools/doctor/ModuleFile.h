#ifndef ORLINDEX_DOCTOR_MODULEFILE_H
#define ORLINDEX_DOCTOR_MODULEFILE_H

#include <string>
#include <vector>

#include "Report.h"

namespace Orlindex::Doctor {

/// The kind of process that a module is for.
enum class Machine
{
    X64,
    X86, ///< 32 bits
    Other
};

/// This tool takes the steps of hosts of its own kind: the registry view, the module's key in the version compatibility
/// file and the factory function's name depend on it.
inline constexpr Machine ToolMachine = sizeof(void*) == 8 ? Machine::X64 : Machine::X86;

/// What is known of a module's file on the disk.
struct ModuleFacts
{
    Machine wanted = ToolMachine; ///< The kind of the hosts that the tool examines.
    bool exists = false;
    bool readable = false;
    bool module = false; ///< The file is a Windows module.
    bool dll = false;
    Machine machine = Machine::Other;
    bool factorySymbol = false; ///< The plugin exports its factory function.
    unsigned long readError = 0;
};

// The functions read module files as data. No code of a module runs.

/// Inspects a plugin module: whether such a process can load it, what it exports, and its version record.
void InspectModuleFile(const std::wstring& path, Report& report, ModuleFacts& facts);

/// Inspects the host's library: whether such a process can load it. The file must exist.
void InspectLibraryFile(const std::wstring& path, Report& report, ModuleFacts& facts);

/// The libraries that a module imports and that are neither beside it, nor beside the host, nor where the system
/// searches.
std::vector<std::string> FindMissingLibraries(const std::wstring& path, const std::wstring& hostDirectory);

/// The libraries that a module imports and that are beside this tool, but neither beside the module nor beside the
/// host: the process that loads the plugin finds them there, and a host does not.
std::vector<std::string> FindLibrariesOfTool(const std::wstring& path, const std::wstring& hostDirectory);

} // namespace Orlindex::Doctor

#endif
