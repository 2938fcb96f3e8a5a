#ifndef ORLINDEX_LOAD_PLUGINMODULE_H
#define ORLINDEX_LOAD_PLUGINMODULE_H

#include <string>
#include <windows.h>

namespace Kestrany::IdentityServices {

class ISSOClientFactory;

using PluginFactoryFunction = ISSOClientFactory* (*)();

/// Loads a module with its own directory as the library search directory, so that its dependencies resolve beside it:
/// one of the same name in the host's directory does not come first. The host's search directory is put back at once.
/// Null with the platform's error code on failure.
HMODULE LoadModuleWithOwnDirectory(const std::wstring& path, DWORD& error);

/// The name of the exported factory function that suits this process.
const char* PluginFactorySymbol();

/// The exported factory function of a loaded module, under the name that suits this process. Null with the platform's
/// error code where the module has none.
PluginFactoryFunction FindPluginFactory(HMODULE module, DWORD& error);

} // namespace Kestrany::IdentityServices

#endif
