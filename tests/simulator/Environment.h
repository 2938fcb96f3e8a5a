#ifndef SIMULATOR_TESTS_ENVIRONMENT_H
#define SIMULATOR_TESTS_ENVIRONMENT_H

#include <string>

#include "load/contract/ISSOClientFactory.h"

namespace Kestrany::Simulator {

/// The server application's file in this build tree.
std::wstring ServerFile();

/// The plugin module's factory, as the library gets it: by its exported name. Its logins are this process's own.
IdentityServices::ISSOClientFactory& PluginFactory();

/// Tells the plugin module where the server application is, and under which name it runs.
void ConfigureServer(const std::string& identity);

/// An identity that no other process uses.
std::string OwnIdentity(const std::string& purpose);

/// Removes what the plugin module kept for identities of this process.
void RemoveOwnFiles();

} // namespace Kestrany::Simulator

#endif
