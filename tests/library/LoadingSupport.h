#ifndef ORLINDEX_LIBRARY_LOADINGSUPPORT_H
#define ORLINDEX_LIBRARY_LOADINGSUPPORT_H

#include <string>

#include "SystemText.h"
#include "support/HostTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

class Loading : public HostTest
{
protected:
    std::string File() const { return Utf8(installation.PluginFile()); }

    /// What is printed if the load of the module at that path fails.
    static std::string LoadFailure(const std::string& path, DWORD error)
    {
        return "Failed to load client plugin module " + path + ". Error: " + SystemText(error) + '\n';
    }

    /// Expects the start-up to fail; returns what was printed.
    static std::string FailedStart()
    {
        CapturedOutput output;
        const IdErrorCode result = IdServicesMgr::Initialize();
        const std::string text = output.Take();
        EXPECT_EQ(result, IdClientUnavailable);
        EXPECT_FALSE(IdServicesMgr::IsInitialized());
        return text;
    }
};

} // namespace OrlindexTest

#endif
