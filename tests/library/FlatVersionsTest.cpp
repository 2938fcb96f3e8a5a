// talix_get_versions, and what the runtime's bounded copy does if a host passes a bad buffer.

#include "FlatTest.h"
#include "GuardedBuffer.h"
#include "InvalidParameter.h"
#include "support/Child.h"
#include "support/MachineKey.h"
#include "support/Platform.h"

namespace OrlindexTest {

namespace {

/// The result for a record with these two buffers.
talix_status_code GetVersions(char* server, std::int32_t serverSize, char* sdk, std::int32_t sdkSize)
{
    talix_versions versions{server, serverSize, sdk, sdkSize};
    return talix_get_versions(&versions);
}

std::string ServerVersion()
{
    char server[64] = "untouched";
    char sdk[64];
    EXPECT_EQ(GetVersions(server, sizeof server, sdk, sizeof sdk), IdSuccess);
    return server;
}

} // namespace

class FlatVersions : public HostTest
{
};

TEST_F(FlatVersions, ANullRecordReturnsSuccess)
{
    EXPECT_EQ(talix_get_versions(nullptr), IdSuccess);
}

TEST_F(FlatVersions, ARecordWithoutAnyUsableBufferIsRefused)
{
    char text[] = "untouched";
    EXPECT_EQ(GetVersions(nullptr, 0, nullptr, 0), IdInvalidVersionRecord);
    EXPECT_EQ(GetVersions(nullptr, 64, nullptr, 64), IdInvalidVersionRecord);
    EXPECT_EQ(GetVersions(text, 0, text, 0), IdInvalidVersionRecord);
    EXPECT_STREQ(text, "untouched");
}

TEST_F(FlatVersions, TheLibrarysOwnVersionIsWrittenBeforeInit)
{
    char server[8] = "before";
    const GuardedBuffer sdk(10);
    EXPECT_EQ(GetVersions(server, sizeof server, sdk.Data(), sdk.Size()), IdSuccess);
    EXPECT_STREQ(sdk.Data(), "1.11.13.3");
    EXPECT_STREQ(server, "") << "none is installed";
}

TEST_F(FlatVersions, NegativeSizesCountAsVeryLarge)
{
    char server[8] = "before";
    char sdk[16] = "before";
    const FaultCounter counter;
    EXPECT_EQ(GetVersions(server, -1, sdk, -2147483647 - 1), IdSuccess);
    EXPECT_STREQ(server, "");
    EXPECT_STREQ(sdk, "1.11.13.3");
    EXPECT_EQ(counter.Faults(), 0);
}

TEST_F(FlatVersions, InOneBufferForBothTheLibrarysOwnVersionStays)
{
    char both[16] = "before";
    EXPECT_EQ(GetVersions(both, sizeof both, both, sizeof both), IdSuccess);
    EXPECT_STREQ(both, "1.11.13.3");
}

TEST_F(FlatVersions, WithOneUsableBufferTheOtherReachesTheHostsHandler)
{
    char text[16] = "before";
    {
        const FaultCounter counter;
        EXPECT_EQ(GetVersions(nullptr, 16, text, sizeof text), IdSuccess);
        EXPECT_STREQ(text, "1.11.13.3");
        EXPECT_EQ(counter.Faults(), 1);
    }
    {
        const FaultCounter counter;
        char untouched[] = "untouched";
        EXPECT_EQ(GetVersions(text, sizeof text, untouched, 0), IdSuccess);
        EXPECT_STREQ(text, "");
        EXPECT_STREQ(untouched, "untouched");
        EXPECT_EQ(counter.Faults(), 1);
    }
}

TEST_F(FlatVersions, ABufferThatIsOneTooSmallIsEmptiedAndReachesTheHostsHandler)
{
    const FaultCounter counter;
    char server[1] = {'x'};
    const GuardedBuffer sdk(9);
    EXPECT_EQ(GetVersions(server, sizeof server, sdk.Data(), sdk.Size()), IdSuccess);
    EXPECT_STREQ(sdk.Data(), "");
    EXPECT_STREQ(server, "");
    EXPECT_EQ(counter.Faults(), 1);
}

TEST_F(FlatVersions, WithoutAHandlerABufferThatIsTooSmallEndsTheProcess)
{
    ExpectProcessEnds(ExitCodeOfInvalidParameter(), [] {
        SetInvalidParameterHandler(nullptr);
        char server[16];
        char sdk[4];
        GetVersions(server, sizeof server, sdk, sizeof sdk);
    });
}

using FlatFault = FlatTest;

TEST_F(FlatFault, ATokenIntoANullBufferReachesTheHostsHandlerAndTheCallGoesOn)
{
    Plugin().OnCall(Client::GetOAuth2AccessToken,
                    [](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(0), L"token"); });
    const FaultCounter counter;
    talix_buffer record{nullptr, 64};
    EXPECT_EQ(talix_get_token(&record), IdSuccess);
    EXPECT_EQ(counter.Faults(), 1);
    Plugin().Return(Client::GetOAuth2AccessToken, 3030);
    EXPECT_EQ(talix_get_token(&record), 3030);
    EXPECT_EQ(talix_get_id_token(&record), IdSuccess);
    EXPECT_EQ(counter.Faults(), 3);
}

TEST_F(FlatFault, ATextThatDoesNotFitIsNoFault)
{
    Plugin().OnCall(Client::GetOAuth2AccessToken,
                    [](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(0), L"token"); });
    const FaultCounter counter;
    char text[5];
    talix_buffer record{text, sizeof text};
    EXPECT_EQ(talix_get_token(&record), IdBufferTooSmall);
    EXPECT_EQ(counter.Faults(), 0);
}

class FlatFaultWithoutHandler : public HostTest
{
};

TEST_F(FlatFaultWithoutHandler, ATokenIntoANullBufferEndsTheProcess)
{
    ExpectProcessEnds(ExitCodeOfInvalidParameter(), [this] {
        installation.Install();
        talix_init();
        SetInvalidParameterHandler(nullptr);
        talix_buffer record{nullptr, 64};
        talix_get_token(&record);
    });
}

class MachineKeyFlatVersions : public HostTest
{
protected:
    const MachineKey key;
};

TEST_F(MachineKeyFlatVersions, TheServerVersionIsTheGreatestRegisteredOne)
{
    key.AddVersion(L"1.9.0", L"C:\\older");
    key.AddVersion(L"1.10.0", L"C:\\newer");
    EXPECT_EQ(ServerVersion(), "1.10.0");
}

TEST_F(MachineKeyFlatVersions, AVersionWithoutALocationDoesNotCount)
{
    key.AddVersion(L"1.9.0", L"C:\\older");
    key.AddVersion(L"1.10.0");
    EXPECT_EQ(ServerVersion(), "1.9.0");
}

TEST_F(MachineKeyFlatVersions, InOneBufferForBothTheLibrarysOwnVersionStays)
{
    key.AddVersion(L"1.10.0.12345", L"C:\\newer");
    char both[16] = "before";
    EXPECT_EQ(GetVersions(both, sizeof both, both, sizeof both), IdSuccess);
    EXPECT_STREQ(both, "1.11.13.3");
}

TEST_F(MachineKeyFlatVersions, WithoutVersionsTheServerVersionIsEmpty)
{
    key.SetLocation(L"C:\\somewhere");
    EXPECT_EQ(ServerVersion(), "");
}

TEST_F(MachineKeyFlatVersions, AServerVersionThatDoesNotFitIsEmptiedAndTheLibrarysIsStillWritten)
{
    key.AddVersion(L"1.10.0", L"C:\\newer");
    const FaultCounter counter;
    const GuardedBuffer server(6);
    char sdk[16];
    EXPECT_EQ(GetVersions(server.Data(), server.Size(), sdk, sizeof sdk), IdSuccess);
    EXPECT_STREQ(server.Data(), "");
    EXPECT_STREQ(sdk, "1.11.13.3");
    EXPECT_EQ(counter.Faults(), 1);
    const GuardedBuffer fits(7);
    EXPECT_EQ(GetVersions(fits.Data(), fits.Size(), sdk, sizeof sdk), IdSuccess);
    EXPECT_STREQ(fits.Data(), "1.10.0");
}

} // namespace OrlindexTest
