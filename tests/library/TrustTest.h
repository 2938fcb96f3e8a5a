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

/// What is said of a file, each with the file's path behind it.
inline constexpr char SaidValid[] = "Binary file: is valid: ";
inline constexpr char SaidUnknownError[] = "Binary file: unknown error: ";
inline constexpr char SaidNotFound[] = "Binary file: not found: ";
inline constexpr char SaidInvalid[] = "Binary file: signature is invalid: ";
inline constexpr char SaidMissing[] = "Binary file: signature is missing: ";
inline constexpr char SaidNotTrusted[] = "Binary file: signature certificate not trusted: ";

/// A start whose verification is watched. WinVerifyTrust works for real unless `verifyAnswer` is set.
class TrustTest : public HostTest
{
protected:
    /// The trust data of one call, as it stood when the call was made.
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

    /// Starts with what is installed and expects that the file is loaded.
    void ExpectAccepted()
    {
        EXPECT_EQ(Start(), "");
        EXPECT_EQ(result_, IdSuccess);
        EXPECT_TRUE(IsLoaded(site.PluginFile()));
        const PluginControl plugin(site.PluginFile());
        EXPECT_THAT(plugin.Log(), testing::Contains(LogLine{Info, SaidValid + Utf8(site.PluginFile())}));
        ExpectStateReleased();
    }

    /// Starts with what is installed and expects that the file is refused: it is not loaded, and the reason is an error
    /// message, which alone is printed.
    void ExpectRefused(const std::string& reason)
    {
        EXPECT_EQ(Start(), reason + Utf8(site.PluginFile()) + '\n');
        EXPECT_EQ(result_, IdClientUnavailable);
        EXPECT_FALSE(IsLoaded(site.PluginFile()));
        ExpectStateReleased();
    }

    /// The last of the calls, and no other, releases the platform's state.
    void ExpectStateReleased()
    {
        ASSERT_FALSE(calls_.empty());
        for (const VerifyCall& call : calls_)
            EXPECT_EQ(call.stateAction == WTD_STATEACTION_CLOSE, &call == &calls_.back());
        EXPECT_EQ(calls_.back().state, stateHandle_) << "of the verification that was made";
    }

    const std::vector<VerifyCall>& Calls() const { return calls_; }

    /// What WinVerifyTrust answers instead of its own result; the state is that of the real verification.
    std::optional<DWORD> verifyAnswer;

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
        const LONG answer = WinVerifyTrustDouble::Original(window, action, data);
        if (trust.dwStateAction != WTD_STATEACTION_VERIFY)
            return answer;
        stateHandle_ = trust.hWVTStateData;
        return verifyAnswer ? static_cast<LONG>(*verifyAnswer) : answer;
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
