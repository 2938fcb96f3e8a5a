#ifndef ORLINDEX_LIBRARY_LOADINGSUPPORT_H
#define ORLINDEX_LIBRARY_LOADINGSUPPORT_H

#include <string>

#include "support/HostTest.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

struct LoadLibraryImport
{
    static constexpr char Name[] = "LoadLibraryW";
    using Type = decltype(LoadLibraryW);
};

using LoadLibraryDouble = ImportDouble<LoadLibraryImport>;

class Loading : public HostTest
{
protected:
    std::string File() const { return Utf8(site.PluginFile()); }

    /// Expects the start to fail; answers what was printed.
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
