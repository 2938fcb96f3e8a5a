#ifndef AGENT_TESTS_ENVIRONMENT_H
#define AGENT_TESTS_ENVIRONMENT_H

#include <string>

#include "load/contract/ISSOClientFactory.h"

namespace Kestrany::Agent {

/// Gives this process, and those that it starts, a settings folder of its own: nobody else sees its servers.
void UseOwnFolder();

/// The server application's file in this build tree.
std::wstring ServerFile();

/// The plugin module's factory, as the library gets it: by its exported name.
IdentityServices::ISSOClientFactory& PluginFactory();

/// Tells the plugin module where its server application is, and under which name it runs.
void ConfigureServer(const std::string& identity);

/// A name that no other process uses.
std::string OwnIdentity(const std::string& purpose);

/// Ends every server of the folder, and removes it.
void CleanUp();

} // namespace Kestrany::Agent

#endif
