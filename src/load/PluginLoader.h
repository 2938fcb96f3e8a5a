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

// The steps that make interfaces of a verified plugin file. All of them run under the process lock.

/// What loading a module came to.
struct ModuleLoad
{
    HMODULE module = nullptr;     ///< Null on failure.
    DWORD error = ERROR_SUCCESS;  ///< Why there is no module.
    bool ambiguousPath = false;   ///< The loader would take a path for another file, and was not called.
    bool fromAnotherFile = false; ///< The platform mapped another file than the verified one.
};

/// Why a verified file is not passed to the platform's loader; ERROR_SUCCESS if it is. The loader would take an
/// ambiguous path for another file than the one verified, and one that is not locked may have been replaced since.
DWORD ReasonNotToLoad(const std::wstring& configuredPath, const LockedFile& verified);

/// Loads a verified file by its final path, with its own directory as the library search directory, so that its
/// dependencies resolve beside it: one of the same name in the host's directory does not come first. The host's search
/// directory is restored at once. The module that the platform returns must have been mapped from the verified file, or
/// be one that this function verified and loaded earlier in this process and whose file was replaced since.
ModuleLoad LoadVerifiedModule(const std::wstring& configuredPath, const LockedFile& verified);

using PluginFactoryFunction = ISSOClientFactory* (*)();

/// The exported factory function of a module, under the name that suits this process.
struct PluginFactorySymbol
{
    PluginFactoryFunction function = nullptr; ///< Null if the module does not export it.
    DWORD error = ERROR_SUCCESS;
};

PluginFactorySymbol FindPluginFactory(HMODULE module);

/// The name that FindPluginFactory looks for.
const char* PluginFactoryName();

/// What connecting the plugin's logger came to. Null where the plugin returned null.
struct PluginLog
{
    IPluginLoggerSource* source = nullptr;
    IPluginLogger* logger = nullptr;
};

/// Makes the plugin's logger the target of the log, and delivers the messages that waited for it. Without a logger
/// source nothing changes.
PluginLog ConnectPluginLogger(ISSOClientFactory& factory);

/// Asks the factory for each interface that is still missing in pluginInterfaces.
void ObtainPluginInterfaces(ISSOClientFactory& factory);

} // namespace Kestrany::IdentityServices

#endif
