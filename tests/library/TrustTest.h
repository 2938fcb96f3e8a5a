#ifndef ORLINDEX_LIBRARY_TRUSTTEST_H
#define ORLINDEX_LIBRARY_TRUSTTEST_H

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/HostTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

/// Messages about a file, each followed by the file's path.
inline constexpr char SaidValid[] = "Binary file: is valid: ";
inline constexpr char SaidUnknownError[] = "Binary file: unknown error: ";
inline constexpr char SaidNotFound[] = "Binary file: not found: ";
inline constexpr char SaidInvalid[] = "Binary file: signature is invalid: ";
inline constexpr char SaidMissing[] = "Binary file: signature is missing: ";
inline constexpr char SaidNotTrusted[] = "Binary file: signature certificate not trusted: ";

/// A start-up whose verification is recorded. WinVerifyTrust really runs unless `verifyResult` is set.
class TrustTest : public HostTest
{
protected:
    /// The trust data of one call, at the time of the call.
    struct VerifyCall
    {
        HWND window;
        GUID action;
        DWORD stateAction;
        HANDLE state;
        WINTRUST_DATA data;
        const void* signatureSettings;
        std::optional<WINTRUST_FILE_INFO> file;
        std::wstring path;
    };

    /// Starts the library and expects that the file is loaded.
    void ExpectAccepted()
    {
        EXPECT_EQ(Start(), "");
        EXPECT_EQ(result_, IdSuccess);
        EXPECT_TRUE(IsLoaded(installation.PluginFile()));
        const PluginControl plugin(installation.PluginFile());
        EXPECT_THAT(plugin.Log(), testing::Contains(LogLine{Info, SaidValid + Utf8(installation.PluginFile())}));
        ExpectStateReleased();
    }

    /// Starts the library and expects that the file is refused: it is not loaded, and only the reason is printed, as an
    /// error message.
    void ExpectRefused(const std::string& reason)
    {
        EXPECT_EQ(Start(), reason + Utf8(installation.PluginFile()) + '\n');
        EXPECT_EQ(result_, IdClientUnavailable);
        EXPECT_FALSE(IsLoaded(installation.PluginFile()));
        ExpectStateReleased();
    }

    /// Expects that the last call, and no other, closes the WinTrust session.
    void ExpectStateReleased()
    {
        ASSERT_FALSE(calls_.empty());
        for (const VerifyCall& call : calls_)
            EXPECT_EQ(call.stateAction == WTD_STATEACTION_CLOSE, &call == &calls_.back());
        EXPECT_EQ(calls_.back().state, stateHandle_) << "of the verification that was made";
    }

    const std::vector<VerifyCall>& Calls() const { return calls_; }

    /// What WinVerifyTrust returns instead of its own result; the session is that of the real verification.
    std::optional<DWORD> verifyResult;

private:
    std::string Start()
    {
        const WinVerifyTrustDouble verify(
            [this](HWND window, GUID* action, LPVOID data) { return Verify(window, action, data); });
        CapturedOutput output;
        result_ = IdServicesMgr::Initialize();
        return output.Take();
    }

    LONG Verify(HWND window, GUID* action, LPVOID data)
    {
        auto& trust = *static_cast<WINTRUST_DATA*>(data);
        Note(window, *action, trust);
        const LONG result = WinVerifyTrustDouble::Original(window, action, data);
        if (trust.dwStateAction != WTD_STATEACTION_VERIFY)
            return result;
        stateHandle_ = trust.hWVTStateData;
        return verifyResult ? static_cast<LONG>(*verifyResult) : result;
    }

    void Note(HWND window, const GUID& action, const WINTRUST_DATA& trust)
    {
        VerifyCall call{window, action, trust.dwStateAction, trust.hWVTStateData, trust, nullptr, std::nullopt, {}};
        if (trust.cbStruct >= 88) // The last field is not in every declaration of the structure.
            std::memcpy(&call.signatureSettings, reinterpret_cast<const unsigned char*>(&trust) + 80, sizeof(void*));
        if (trust.pFile != nullptr)
        {
            call.file = *trust.pFile;
            call.path = trust.pFile->pcwszFilePath;
        }
        calls_.push_back(call);
    }

    std::vector<VerifyCall> calls_;
    HANDLE stateHandle_ = nullptr;
    int result_ = 0;
};

} // namespace OrlindexTest

#endif
