// Verification without a file: the library's callers see to it that there is one.

#include <gtest/gtest.h>
#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

#include "Imports.h"
#include "load/BinaryTrust.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

struct WinVerifyTrustImport
{
    static constexpr char Name[] = "WinVerifyTrust";
    using Type = LONG(HWND, GUID*, LPVOID);
};

} // namespace

TEST(BinaryTrust, AnEmptyPathIsNotFoundAndThePlatformIsNotAsked)
{
    const ImportDouble<WinVerifyTrustImport> verify(
        [](HWND, GUID*, LPVOID) {
            ADD_FAILURE() << "there is nothing to verify";
            return LONG{0};
        },
        Executable());
    EXPECT_EQ(VerifyBinaryTrust({}, {}), BinaryTrustResult::NotFound);
}

} // namespace OrlindexTest
