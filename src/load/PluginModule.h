#ifndef ORLINDEX_LOAD_PLUGINMODULE_H
#define ORLINDEX_LOAD_PLUGINMODULE_H

#include <string>
#include <windows.h>

namespace Kestrany::IdentityServices {

class ISSOClientFactory;

using PluginFactoryFunction = ISSOClientFactory* (*)();

/// How the load of a module ended: with the module, or with the platform's error code.
struct ModuleLoad
{
    HMODULE module = nullptr;
    DWORD error = ERROR_SUCCESS;
};

/// Loads a module with its own directory as the library search directory, so that its dependencies resolve beside it:
/// one of the same name in the host's directory does not come first. The host's search directory is restored at once.
/// With a `refusal` that is not ERROR_SUCCESS the platform's loader is not called, and that is the load's error; the
/// search directory is set and restored all the same.
ModuleLoad LoadModuleWithOwnDirectory(const std::wstring& path, DWORD refusal);

/// Keeps in mind that a loaded module is one that was verified. Its caller never releases it, so that its handle stands
/// for it as long as the process lives. Under the process lock.
void RememberVerifiedModule(HMODULE module);

/// Whether RememberVerifiedModule was called with the module, under the process lock. The platform answers a path with
/// the module that it loaded by that path before, whatever file lies there by now.
bool IsVerifiedModule(HMODULE module);

/// The name of the exported factory function that suits this process.
const char* PluginFactorySymbol();

/// The exported factory function of a loaded module, under the name that suits this process. Null with the platform's
/// error code if the module has none.
PluginFactoryFunction FindPluginFactory(HMODULE module, DWORD& error);

} // namespace Kestrany::IdentityServices

#endif
