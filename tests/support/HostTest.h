#ifndef ORLINDEX_SUPPORT_HOSTTEST_H
#define ORLINDEX_SUPPORT_HOSTTEST_H

#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CapturedOutput.h"
#include "ImportPatch.h"
#include "Installation.h"
#include "PluginControl.h"
#include "Text.h"
#include "orlindex/IdServicesMgr.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::IdServicesMgr;

/// Levels of log messages.
enum LogLevel
{
    Error = 2,
    Warning = 4,
    Info = 8
};

/// A test in a host process of its own, with nothing installed yet.
class HostTest : public testing::Test
{
protected:
    /// Installs everything with one build of the test plugin, which the test controls from now on.
    PluginControl& InstallPlugin(const std::string& plugin = "good")
    {
        installation.Install(plugin);
        return plugin_.emplace(installation.PluginFile());
    }

    PluginControl& Plugin() { return *plugin_; }

    const Installation installation;

private:
    std::optional<PluginControl> plugin_;
};

/// A test with the library initialized and the journal empty.
class StartedTest : public HostTest
{
protected:
    void SetUp() override
    {
        InstallPlugin();
        Start();
    }

    void Start()
    {
        ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
        manager = IdServicesMgr::GetInstance();
        ASSERT_NE(manager, nullptr);
        Plugin().ClearJournal();
    }

    IdServicesMgr* manager = nullptr;
};

} // namespace OrlindexTest

#endif
