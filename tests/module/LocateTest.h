#ifndef ORLINDEX_MODULE_LOCATETEST_H
#define ORLINDEX_MODULE_LOCATETEST_H

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "locate/SSOPathResolver.h"
#include "support/Site.h"
#include "support/Text.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::SSOPathResolver;

/// The library's own sources inside a host process, with nothing installed. Orlindex.dll lies in a folder of its own
/// and is loaded from there, so that the library's folder and the host's can be told apart.
class LocateTest : public testing::Test
{
protected:
    LocateTest();

    /// Installs the server application, named by the client config file, and lets it be found; the log starts empty.
    void FindServerApplication();

    const Site site;
    const std::filesystem::path library; ///< Folder of Orlindex.dll.
    LogCapture log;
    SSOPathResolver& manager;
};

/// A client config file whose only content is one member of "ssoServer".
std::string ServerMember(const std::string& key, const std::string& value);

/// Directories as messages show them.
std::string Lines(const std::vector<std::filesystem::path>& directories);

} // namespace OrlindexTest

#endif
