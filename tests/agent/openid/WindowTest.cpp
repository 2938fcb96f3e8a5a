// The sign-in window, on a screen: on-display.sh starts this program with one.
//
//   openid_window_tests.exe --show browser|device   shows the window until it is cancelled, for a picture

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

#include "identity/openid/windows/SignInWindow.h"
#include "platform/Base.h"
#include "support/Patience.h"

namespace Kestrany::Agent::OpenId {

namespace {

using Clock = std::chrono::steady_clock;

/// Waits until something is true that other threads cause.
template <class Condition>
bool Becomes(Condition condition)
{
    const auto limit = Clock::now() + OrlindexTest::Patience;
    while (!condition())
    {
        if (Clock::now() >= limit)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

std::string TextOf(HWND window)
{
    wchar_t text[512] = L"";
    SendMessageW(window, WM_GETTEXT, 512, reinterpret_cast<LPARAM>(text));
    return Narrow(text);
}

std::string TypeOf(HWND window)
{
    wchar_t text[64] = L"";
    GetClassNameW(window, text, 64);
    return Narrow(text);
}

PromptText BrowserText()
{
    return {false, "https://login.example.com/realms/main", {}, {}};
}

PromptText DeviceText()
{
    return {true, "https://login.example.com/realms/main", "https://login.example.com/device", "WDJB-MJHT"};
}

class SignInWindowTest : public testing::Test
{
protected:
    void Show(PromptText text)
    {
        PromptActions actions;
        actions.openBrowser = [this] { ++opened; };
        actions.cancel = [this] { ++cancelled; };
        actions.newAddress = [] { return std::string("http://127.0.0.1:50000/go/one-time"); };
        actions.notShown = [this] { ++notShown; };
        prompt = windows.Show(std::move(text), std::move(actions));
        ASSERT_TRUE(Becomes([&] {
            window = FindWindowW(L"Kestrany.Pellwick.SignIn", nullptr);
            return window != nullptr && IsWindowVisible(window) && Focus() != nullptr && Focus() != window;
        }));
    }
    /// The control that has the keyboard.
    HWND Focus() const
    {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) ? info.hwndFocus : nullptr;
    }
    void Press(WPARAM key) const { PostMessageW(Focus(), WM_KEYDOWN, key, 1); }
    std::vector<HWND> Controls() const
    {
        std::vector<HWND> found;
        for (HWND each = GetWindow(window, GW_CHILD); each != nullptr; each = GetWindow(each, GW_HWNDNEXT))
            found.push_back(each);
        return found;
    }
    HWND Find(const std::string& text) const
    {
        for (HWND each : Controls())
        {
            if (TextOf(each) == text)
                return each;
        }
        return nullptr;
    }

    void ExpectControlsInside() const
    {
        RECT client{};
        GetClientRect(window, &client);
        for (HWND control : Controls())
        {
            RECT place{};
            GetWindowRect(control, &place);
            MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
            EXPECT_GE(place.left, 0) << TextOf(control);
            EXPECT_LE(place.right, client.right) << TextOf(control);
            EXPECT_LE(place.bottom, client.bottom) << TextOf(control);
            EXPECT_GT(place.right, place.left) << TextOf(control);
        }
    }

    std::atomic<int> opened{0};
    std::atomic<int> cancelled{0};
    std::atomic<int> notShown{0};
    SignInWindows windows;
    std::unique_ptr<Prompt> prompt;
    HWND window = nullptr;
};

TEST_F(SignInWindowTest, TheKeyboardReachesEveryButton)
{
    Show(BrowserText());
    EXPECT_EQ(TextOf(window), "Sign in");
    EXPECT_EQ(TextOf(Focus()), "&Open the browser again");
    Press(VK_RETURN);
    EXPECT_TRUE(Becomes([&] { return opened == 1; }));
    Press(VK_TAB);
    EXPECT_TRUE(Becomes([&] { return TextOf(Focus()) == "Co&py the address"; }));
    Press(VK_TAB);
    EXPECT_TRUE(Becomes([&] { return TextOf(Focus()) == "Cancel"; }));
    Press(VK_TAB);
    EXPECT_TRUE(Becomes([&] { return TextOf(Focus()) == "&Open the browser again"; }));
    EXPECT_EQ(cancelled, 0);
    Press(VK_ESCAPE);
    EXPECT_TRUE(Becomes([&] { return cancelled == 1; }));
    EXPECT_TRUE(IsWindow(window)) << "its owner ends it";
    prompt.reset();
    EXPECT_TRUE(Becomes([&] { return IsWindow(window) == FALSE; }));
    EXPECT_EQ(notShown, 0);
}

TEST_F(SignInWindowTest, ClosingTheWindowCancels)
{
    Show(BrowserText());
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(Becomes([&] { return cancelled == 1; }));
}

TEST_F(SignInWindowTest, TheAddressIsCopied)
{
    Show(BrowserText());
    PostMessageW(Find("Co&py the address"), BM_CLICK, 0, 0);
    EXPECT_TRUE(Becomes([&] { return Find("The address was copied. Open it in a browser.") != nullptr; }));
    ASSERT_TRUE(Becomes([] { return OpenClipboard(nullptr) != FALSE; }));
    const HANDLE data = GetClipboardData(CF_UNICODETEXT);
    ASSERT_NE(data, nullptr);
    EXPECT_STREQ(static_cast<const wchar_t*>(GlobalLock(data)), L"http://127.0.0.1:50000/go/one-time");
    GlobalUnlock(data);
    CloseClipboard();
}

TEST_F(SignInWindowTest, ABrowserProblemIsShown)
{
    Show(BrowserText());
    prompt->ShowBrowserProblem();
    EXPECT_TRUE(Becomes([&] {
        return Find("The browser could not be opened. Copy the address, and open it in a browser on this computer.") !=
               nullptr;
    }));
}

TEST_F(SignInWindowTest, TheDevicesAddressAndCodeFollowTheTextsThatNameThem)
{
    Show(DeviceText());
    EXPECT_EQ(TextOf(Focus()), "Co&py the address");
    const std::vector<HWND> controls = Controls();
    int fields = 0;
    for (std::size_t index = 1; index < controls.size(); ++index)
    {
        if (TypeOf(controls[index]) != "Edit")
            continue;
        ++fields;
        EXPECT_EQ(TypeOf(controls[index - 1]), "Static") << "screen readers take it for the name";
        EXPECT_FALSE(TextOf(controls[index - 1]).empty());
    }
    EXPECT_EQ(fields, 2);
    ASSERT_NE(Find("WDJB-MJHT"), nullptr);
    ASSERT_NE(Find("https://login.example.com/device"), nullptr);
    EXPECT_EQ(Find("&Open the browser again"), nullptr);
    // Large: the letters are at least twice as high as those of the other texts.
    const auto height = [](HWND control) {
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof font, &font);
        return -font.lfHeight;
    };
    EXPECT_GE(height(Find("WDJB-MJHT")), 2 * height(Find("Cancel")));
}

TEST_F(SignInWindowTest, EveryControlIsInsideTheWindow)
{
    for (const bool isDevice : {false, true})
    {
        Show(isDevice ? DeviceText() : BrowserText());
        ExpectControlsInside();
        prompt.reset();
        EXPECT_TRUE(Becomes([&] { return IsWindow(window) == FALSE; }));
    }
}

TEST_F(SignInWindowTest, ABrowserProblemBeforeTheWindowIsThereIsShown)
{
    prompt = windows.Show(BrowserText(), {[] {}, [] { return std::string(); }, [] {}, [] {}});
    prompt->ShowBrowserProblem();
    EXPECT_TRUE(Becomes([&] {
        window = FindWindowW(L"Kestrany.Pellwick.SignIn", nullptr);
        return window != nullptr && Find("The browser could not be opened. Copy the address, and open it in a browser "
                                         "on this computer.") != nullptr;
    }));
}

TEST_F(SignInWindowTest, TheWindowFollowsTheScalingOfTheScreen)
{
    for (const bool isDevice : {false, true})
    {
        Show(isDevice ? DeviceText() : BrowserText());
        const auto place = [](HWND each) {
            RECT area{};
            GetClientRect(each, &area);
            return area;
        };
        const RECT before = place(window);
        const RECT button = place(Find("Cancel"));
        RECT wanted{40, 50, 1000, 900};
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&wanted));
        EXPECT_NEAR(place(window).right, 2 * before.right, 20);
        EXPECT_EQ(place(Find("Cancel")).bottom, 2 * button.bottom);
        EXPECT_GT(place(Find("Cancel")).right, button.right * 3 / 2) << "the letters are larger, too";
        RECT frame{};
        GetWindowRect(window, &frame);
        EXPECT_EQ(frame.left, wanted.left) << "where the system wants it";
        EXPECT_EQ(frame.top, wanted.top);
        ExpectControlsInside();
        prompt.reset();
        EXPECT_TRUE(Becomes([&] { return IsWindow(window) == FALSE; }));
    }
}

TEST_F(SignInWindowTest, TheKeyboardComesBackToTheControlThatHadIt)
{
    Show(BrowserText());
    Press(VK_TAB);
    ASSERT_TRUE(Becomes([&] { return TextOf(Focus()) == "Co&py the address"; }));
    // As when the user changes to another program and back.
    SendMessageW(window, WM_ACTIVATE, WA_INACTIVE, 0);
    SendMessageW(window, WM_SETFOCUS, 0, 0);
    EXPECT_EQ(TextOf(Focus()), "Co&py the address");
}

TEST_F(SignInWindowTest, AWindowWhoseSignInEndsAtOnceCloses)
{
    for (int round = 0; round < 20; ++round)
        windows.Show(BrowserText(), {[] {}, [] { return std::string(); }, [] {}, [] {}});
    EXPECT_TRUE(Becomes([] { return FindWindowW(L"Kestrany.Pellwick.SignIn", nullptr) == nullptr; }));
}

int ShowForAPicture(const std::string& mode)
{
    SignInWindows windows;
    std::promise<void> cancelled;
    PromptActions actions;
    actions.openBrowser = [] {};
    actions.newAddress = [] { return std::string("http://127.0.0.1:50000/go/one-time"); };
    actions.cancel = actions.notShown = [&] { cancelled.set_value(); };
    const std::unique_ptr<Prompt> prompt =
        windows.Show(mode == "device" ? DeviceText() : BrowserText(), std::move(actions));
    cancelled.get_future().wait_for(OrlindexTest::Patience);
    return 0;
}

} // namespace

} // namespace Kestrany::Agent::OpenId

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--show")
        return Kestrany::Agent::OpenId::ShowForAPicture(argv[2]);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
