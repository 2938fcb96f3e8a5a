#include "Worker.h"

#include <cstdio>
#include <random>

#include "Environment.h"
#include "HostRoles.h"
#include "identity/ResultCodes.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "platform/Base.h"

namespace Kestrany::Agent {

namespace {

class Worker
{
public:
    Worker(const std::string& meeting, unsigned int seed)
        : leave_(OpenEventW(SYNCHRONIZE, FALSE, LeaveEventName(meeting).c_str())),
          progress_(OpenEventW(EVENT_MODIFY_STATE, FALSE, ProgressEventName(meeting).c_str())), random_(seed)
    {
    }

    bool Run()
    {
        do
        {
            if (!LogIn() || !ReadUser() || !ReadToken() || (random_() % 4 == 0 && !Refresh()))
                return false;
            client_.DispatchEvent();
            SetEvent(progress_.get());
        }
        while (WaitForSingleObject(leave_.get(), random_() % 4) == WAIT_TIMEOUT);
        PluginFactory().GetSSOClientModule()->Uninitialize();
        return true;
    }

private:
    /// At most one server dies within a call, which is then repeated at the next one.
    static bool Succeeded(const char* step, IdErrorCode code)
    {
        if (code == IdSuccess)
            return true;
        std::fprintf(stderr, "worker %lu: %s returned %d\n", GetCurrentProcessId(), step, static_cast<int>(code));
        return false;
    }

    /// Nobody signs out: the user stays signed in.
    bool LogIn()
    {
        int detail = -1;
        const IdErrorCode code = client_.Login(detail);
        if (code == IdSuccess && detail == 0 && wasLoggedIn_)
        {
            std::fprintf(stderr, "worker %lu: the login was lost\n", GetCurrentProcessId());
            return false;
        }
        wasLoggedIn_ = wasLoggedIn_ || code == IdSuccess;
        return Succeeded("Login", code);
    }

    bool ReadUser()
    {
        talix_user_info info{};
        const IdErrorCode code = client_.GetUserInfo(&info);
        return (code == IdNotLoggedIn && !wasLoggedIn_) || Succeeded("GetUserInfo", code);
    }

    bool ReadToken()
    {
        wchar_t buffer[4096] = L"";
        const IdErrorCode code = client_.GetOAuth2AccessToken(buffer, 4096, false);
        if (code == IdNotLoggedIn && !wasLoggedIn_)
            return true;
        if (code == IdSuccess && !token_.empty() && token_ != buffer)
        {
            std::fprintf(stderr, "worker %lu: the token was lost\n", GetCurrentProcessId());
            return false;
        }
        if (code == IdSuccess)
            token_ = buffer;
        return Succeeded("GetOAuth2AccessToken", code);
    }

    bool Refresh()
    {
        token_.clear(); // The new one is known once it is read.
        const IdErrorCode code = client_.RefreshOAuth2Token(false);
        return (code == IdNotLoggedIn && !wasLoggedIn_) || Succeeded("RefreshOAuth2Token", code);
    }

    IdentityServices::ISSOClient& client_ = *PluginFactory().GetSSOClient();
    const Handle leave_;
    const Handle progress_;
    std::mt19937 random_;
    std::wstring token_;
    bool wasLoggedIn_ = false;
};

} // namespace

std::wstring ProgressEventName(const std::string& meeting)
{
    return L"Local\\" + std::wstring(meeting.begin(), meeting.end()) + L".Progress";
}

bool RunWorker(const std::string& meeting, unsigned int seed)
{
    return Worker(meeting, seed).Run();
}

} // namespace Kestrany::Agent
