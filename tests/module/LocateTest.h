#ifndef ORLINDEX_MODULE_LOCATETEST_H
#define ORLINDEX_MODULE_LOCATETEST_H

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "locate/SSOPathResolver.h"
#include "support/Installation.h"
#include "support/Text.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::SSOPathResolver;

/// The library's own sources inside a host process, with nothing installed. Orlindex.dll is loaded from a folder of its
/// own, so that the library's folder and the host's differ.
class LocateTest : public testing::Test
{
protected:
    LocateTest();

    /// Installs the server application with a client config file that leads to it, finds it, and clears the log.
    void FindServerApplication();

    const Installation installation;
    const std::filesystem::path library; ///< Folder of Orlindex.dll.
    LogCapture log;
    SSOPathResolver& manager;
};

/// A client config file whose only content is one member of "ssoServer".
std::string ServerMember(const std::string& key, const std::string& value);

/// Directories as they appear in messages.
std::string Lines(const std::vector<std::filesystem::path>& directories);

} // namespace OrlindexTest

#endif
