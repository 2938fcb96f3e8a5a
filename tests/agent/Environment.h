#ifndef AGENT_TESTS_ENVIRONMENT_H
#define AGENT_TESTS_ENVIRONMENT_H

#include <string>

#include "load/contract/ISSOClientFactory.h"

namespace Kestrany::Agent {

/// Gives this process and its child processes their own settings folder: other processes do not see their servers.
void UseOwnFolder();

/// The server application's file in this build tree.
std::wstring ServerFile();

/// The plugin module's factory, as the library gets it: by its exported name.
IdentityServices::ISSOClientFactory& PluginFactory();

/// Sets the path of the plugin module's server application, and the identity that it runs under.
void ConfigureServer(const std::string& identity);

/// A name that no other process uses.
std::string OwnIdentity(const std::string& purpose);

/// Ends every server of the folder, and removes it.
void CleanUp();

} // namespace Kestrany::Agent

#endif
