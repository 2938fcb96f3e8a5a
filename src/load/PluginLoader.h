#ifndef ORLINDEX_LOAD_PLUGINLOADER_H
#define ORLINDEX_LOAD_PLUGINLOADER_H

#include <string>
#include <windows.h>

namespace Kestrany::IdentityServices {

class IPluginLogger;
class IPluginLoggerSource;
class ISSOClientFactory;
class ISSOServerManager;
class LockedFile;

// The steps from a verified plugin file to its interfaces. All of them run under the process lock.

/// The result of loading a module.
struct ModuleLoad
{
    HMODULE module = nullptr;     ///< Null on failure.
    DWORD error = ERROR_SUCCESS;  ///< Why there is no module.
    bool ambiguousPath = false;   ///< The platform's loader would resolve a path to another file, and was not called.
    bool fromAnotherFile = false; ///< The platform mapped another file than the verified one.
};

/// Why a verified file must not be passed to the platform's loader; ERROR_SUCCESS if it may. The loader would resolve
/// an ambiguous path to another file than the verified one, and a file that is not locked may have been replaced since.
DWORD ReasonNotToLoad(const std::wstring& configuredPath, const LockedFile& verified);

/// Loads a verified file by its final path. During the load, the file's own directory is the DLL search directory:
/// dependencies are then found beside the file, and not first in the host's directory. The host's search directory is
/// restored at once. The module that the platform returns must have been mapped from the verified file, or be one that
/// this function verified and loaded earlier in this process and whose file was replaced since.
ModuleLoad LoadVerifiedModule(const std::wstring& configuredPath, const LockedFile& verified);

using PluginFactoryFunction = ISSOClientFactory* (*)();

/// The exported factory function of a module, under the symbol name for this process's architecture.
struct PluginFactorySymbol
{
    PluginFactoryFunction function = nullptr; ///< Null if the module does not export it.
    DWORD error = ERROR_SUCCESS;
};

PluginFactorySymbol FindPluginFactory(HMODULE module);

/// The symbol name that FindPluginFactory looks for.
const char* PluginFactoryName();

/// The result of connecting the plugin's logger. Null if the plugin returned null.
struct PluginLog
{
    IPluginLoggerSource* source = nullptr;
    IPluginLogger* logger = nullptr;
};

/// Makes the plugin's logger the target of the log, and delivers the pending messages to it. Changes nothing if the
/// plugin has no logger source.
PluginLog ConnectPluginLogger(ISSOClientFactory& factory);

/// Asks the factory for each interface that is still null in pluginInterfaces.
void ObtainPluginInterfaces(ISSOClientFactory& factory);

} // namespace Kestrany::IdentityServices

#endif
