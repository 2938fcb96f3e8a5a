#include "identity/openid/windows/SignInWindow.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <process.h>
#include <windows.h>

#include "platform/Base.h"

// NOLINTBEGIN(performance-no-int-to-ptr): windows messages and handles are numbers and addresses in one.

namespace Kestrany::Agent::OpenId {

namespace {

constexpr wchar_t ClassName[] = L"Kestrany.Pellwick.SignIn";

// Messages to the window.
constexpr UINT EndMessage = WM_APP;
constexpr UINT BrowserProblemMessage = WM_APP + 1;

constexpr int OpenButton = 100;
constexpr int CopyButton = 101;

// In pixels at 96 dots per inch.
constexpr int ContentWidth = 400;
constexpr int Margin = 16;
constexpr int Gap = 10;
constexpr int ButtonHeight = 28;
constexpr int ButtonPadding = 24;
constexpr int FieldPadding = 8;

constexpr int LargePoints = 20;
constexpr int SmallestLargePoints = 11;

/// Milliseconds within which a window closes.
constexpr DWORD CloseLimit = 2000;

struct FontDeleter
{
    void operator()(HFONT font) const { DeleteObject(font); }
};
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, FontDeleter>;

/// Functions of Windows 10, version 1607 and later.
template <class Function>
Function UserFunction(const char* name)
{
    const FARPROC address = GetProcAddress(GetModuleHandleW(L"user32.dll"), name);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(address));
}

/// Lets this thread's windows follow the scaling of the screen that they are on.
void FollowScaling()
{
    using Set = HANDLE(WINAPI*)(HANDLE);
    if (const auto set = UserFunction<Set>("SetThreadDpiAwarenessContext"))
        set(reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-4))); // DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2
}

UINT DpiOf(HWND window)
{
    using Get = UINT(WINAPI*)(HWND);
    if (const auto get = UserFunction<Get>("GetDpiForWindow"))
    {
        if (const UINT dpi = get(window))
            return dpi;
    }
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return static_cast<UINT>(dpi);
}

/// The font of the system's messages; with `points`, in that size and bold.
Font MakeFont(UINT dpi, int points)
{
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    LOGFONTW font = metrics.lfMessageFont;
    font.lfHeight = -MulDiv(points == 0 ? 9 : points, static_cast<int>(dpi), 72);
    font.lfWidth = 0;
    if (points != 0)
        font.lfWeight = FW_SEMIBOLD;
    return Font(CreateFontIndirectW(&font));
}

bool CopyToClipboard(HWND owner, const std::wstring& text)
{
    if (!OpenClipboard(owner))
        return false;
    EmptyClipboard();
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    bool isCopied = false;
    if (void* const target = memory == nullptr ? nullptr : GlobalLock(memory))
    {
        std::memcpy(target, text.c_str(), size);
        GlobalUnlock(memory);
        isCopied = SetClipboardData(CF_UNICODETEXT, memory) != nullptr; // Takes the memory.
    }
    if (!isCopied && memory != nullptr)
        GlobalFree(memory);
    CloseClipboard();
    return isCopied;
}

/// What the window's thread and its owner share.
struct Shared
{
    std::mutex mutex;
    HWND window = nullptr; ///< Null before and after its life.
    bool isEnded = false;
    bool hasBrowserProblem = false;
};

/// The window, on its own thread.
class Window
{
public:
    Window(PromptText text, PromptActions actions, std::shared_ptr<Shared> shared)
        : text_(std::move(text)), actions_(std::move(actions)), shared_(std::move(shared))
    {
    }

    void Run()
    {
        FollowScaling();
        if (!Create())
            return actions_.notShown();
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
        {
            // Tab, the arrow keys, Enter, Escape, and Alt with the underlined letters.
            if (!IsDialogMessageW(window_, &message))
            {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
    }

private:
    struct Control
    {
        HWND handle;
        bool isLarge;
        bool isButton;
        Font font{}; ///< Of a large one.
    };

    bool Create()
    {
        const HINSTANCE module = GetModuleHandleW(nullptr);
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.lpfnWndProc = &Window::Receive;
        description.hInstance = module;
        description.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
        description.hIcon = LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_INFORMATION));
        description.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
        description.lpszClassName = ClassName;
        RegisterClassExW(&description); // Fails if another window has registered it.
        window_ = CreateWindowExW(WS_EX_CONTROLPARENT | WS_EX_DLGMODALFRAME, ClassName, L"Sign in",
                                  WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, CW_USEDEFAULT,
                                  CW_USEDEFAULT, 100, 100, nullptr, nullptr, module, this);
        if (window_ == nullptr)
            return false;
        AddControls();
        focus_ = GetDlgItem(window_, text_.isDevice ? CopyButton : OpenButton);
        dpi_ = DpiOf(window_);
        Arrange(nullptr);
        const std::lock_guard lock(shared_->mutex);
        if (shared_->isEnded)
        {
            DestroyWindow(window_);
            return true; // The loop ends at once.
        }
        shared_->window = window_;
        if (shared_->hasBrowserProblem)
            PostMessageW(window_, BrowserProblemMessage, 0, 0);
        ShowWindow(window_, SW_SHOWNORMAL);
        SetForegroundWindow(window_);
        SetFocus(focus_);
        return true;
    }

    void AddControls()
    {
        const std::wstring provider = Widen(text_.provider);
        if (text_.isDevice)
        {
            AddText(L"Sign in with another device at " + provider +
                    L". This window closes by itself when you are signed in.");
            AddText(L"Open this address on your phone or on another computer:");
            AddField(Widen(text_.address));
            AddText(L"Enter this code there:");
            AddField(Widen(text_.userCode));
        }
        else
            AddText(L"Your browser shows the sign-in page of " + provider +
                    L". Sign in there. This window closes by itself when you are signed in.");
        status_ = AddText(L"");
        if (!text_.isDevice)
            AddButton(OpenButton, L"&Open the browser again", true);
        AddButton(CopyButton, L"Co&py the address", text_.isDevice);
        AddButton(IDCANCEL, L"Cancel", false);
    }

    HWND Add(const wchar_t* type, const std::wstring& text, DWORD style, int id, bool isLarge, bool isButton)
    {
        const HWND control =
            CreateWindowExW(0, type, text.c_str(), WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
        controls_.push_back({control, isLarge, isButton, {}});
        return control;
    }
    HWND AddText(const std::wstring& text) { return Add(L"STATIC", text, SS_NOPREFIX, -1, false, false); }
    /// A text to read and to select. Screen readers name it by the text before it.
    void AddField(const std::wstring& text)
    {
        Add(L"EDIT", text, WS_TABSTOP | WS_BORDER | ES_READONLY | ES_CENTER | ES_AUTOHSCROLL, -1, true, false);
    }
    void AddButton(int id, const std::wstring& text, bool isDefault)
    {
        Add(L"BUTTON", text, WS_TABSTOP | (isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON), id, false, true);
    }

    int Scaled(int pixels) const { return MulDiv(pixels, static_cast<int>(dpi_), 96); }

    SIZE Measure(HWND control, HFONT font, int width) const
    {
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
        const HDC context = GetDC(control);
        const HGDIOBJ earlier = SelectObject(context, font);
        RECT area{0, 0, width, 0};
        const UINT words = width == 0 ? DT_SINGLELINE : DT_WORDBREAK | DT_NOPREFIX;
        DrawTextW(context, text.empty() ? L"X" : text.c_str(), -1, &area, DT_CALCRECT | words);
        SelectObject(context, earlier);
        ReleaseDC(control, context);
        return {area.right, area.bottom};
    }

    /// The largest font in which the whole text is seen; the smallest one if it is too long for all.
    Font LargestFont(HWND control, int width) const
    {
        int points = LargePoints;
        Font font = MakeFont(dpi_, points);
        while (points > SmallestLargePoints && Measure(control, font.get(), 0).cx > width)
            font = MakeFont(dpi_, --points);
        return font;
    }

    static void Place(HWND control, HFONT font, const RECT& place)
    {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
        MoveWindow(control, place.left, place.top, place.right - place.left, place.bottom - place.top, TRUE);
    }

    /// Places the controls from top to bottom, and the buttons in a row below them. `place`: where the system wants the
    /// window after a change of the scaling.
    void Arrange(const RECT* place)
    {
        font_ = MakeFont(dpi_, 0);
        const int width = Scaled(text_.isDevice ? ContentWidth * 5 / 4 : ContentWidth);
        int top = Scaled(Margin);
        int left = Scaled(Margin);
        for (Control& control : controls_)
        {
            if (control.isButton)
            {
                const int buttonWidth = Measure(control.handle, font_.get(), 0).cx + Scaled(ButtonPadding);
                Place(control.handle, font_.get(), {left, top, left + buttonWidth, top + Scaled(ButtonHeight)});
                left += buttonWidth + Scaled(Gap);
                continue;
            }
            if (control.isLarge)
                control.font = LargestFont(control.handle, width - Scaled(2 * FieldPadding));
            HFONT const font = control.isLarge ? control.font.get() : font_.get();
            const int height = control.isLarge ? Measure(control.handle, font, 0).cy + Scaled(FieldPadding)
                                               : Measure(control.handle, font, width).cy;
            Place(control.handle, font, {Scaled(Margin), top, Scaled(Margin) + width, top + height});
            top += height + Scaled(Gap);
        }
        RECT frame{0, 0, std::max(width + 2 * Scaled(Margin), left - Scaled(Gap) + Scaled(Margin)),
                   top + Scaled(ButtonHeight) + Scaled(Margin)};
        AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongW(window_, GWL_STYLE)), FALSE,
                           static_cast<DWORD>(GetWindowLongW(window_, GWL_EXSTYLE)));
        SetWindowPos(window_, nullptr, place == nullptr ? 0 : place->left, place == nullptr ? 0 : place->top,
                     frame.right - frame.left, frame.bottom - frame.top,
                     SWP_NOZORDER | SWP_NOACTIVATE | (place == nullptr ? SWP_NOMOVE : 0));
    }

    void ShowStatus(const wchar_t* text)
    {
        SetWindowTextW(status_, text);
        NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, status_, OBJID_CLIENT, CHILDID_SELF); // For screen readers.
        Arrange(nullptr);
    }

    void Command(int id)
    {
        switch (id)
        {
        case OpenButton:
            return actions_.openBrowser();
        case CopyButton:
            return ShowStatus(CopyToClipboard(window_, Widen(actions_.newAddress()))
                                  ? L"The address was copied. Open it in a browser."
                                  : L"The address could not be copied. Try again.");
        case IDCANCEL:
            return actions_.cancel();
        default:
            return;
        }
    }

    LRESULT Handle(UINT message, WPARAM wide, LPARAM parameter)
    {
        switch (message)
        {
        case WM_COMMAND:
            Command(LOWORD(wide));
            return 0;
        case WM_CLOSE:
            actions_.cancel();
            return 0;
        case EndMessage:
            DestroyWindow(window_);
            return 0;
        case BrowserProblemMessage:
            ShowStatus(L"The browser could not be opened. Copy the address, and open it in a browser on this "
                       L"computer.");
            return 0;
        case WM_DPICHANGED:
            dpi_ = HIWORD(wide);
            Arrange(reinterpret_cast<const RECT*>(parameter));
            return 0;
        case DM_GETDEFID: // What Enter presses.
            return MAKELRESULT(text_.isDevice ? CopyButton : OpenButton, DC_HASDEFID);
        case WM_ACTIVATE:
            if (LOWORD(wide) == WA_INACTIVE)
                focus_ = GetFocus();
            return DefWindowProcW(window_, message, wide, parameter);
        case WM_SETFOCUS:
            SetFocus(focus_);
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcW(window_, message, wide, parameter);
        }
    }

    static LRESULT CALLBACK Receive(HWND handle, UINT message, WPARAM wide, LPARAM parameter)
    {
        if (message == WM_NCCREATE)
        {
            auto* const created = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(parameter)->lpCreateParams);
            created->window_ = handle;
            SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
        }
        auto* const window = reinterpret_cast<Window*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
        return window == nullptr ? DefWindowProcW(handle, message, wide, parameter)
                                 : window->Handle(message, wide, parameter);
    }

    const PromptText text_;
    const PromptActions actions_;
    const std::shared_ptr<Shared> shared_;
    HWND window_ = nullptr;
    HWND status_ = nullptr;
    HWND focus_ = nullptr; ///< The control that gets the keyboard with the window.
    UINT dpi_ = 96;
    std::vector<Control> controls_;
    Font font_;
};

/// The owner's end of a window.
class WindowPrompt final : public Prompt
{
public:
    explicit WindowPrompt(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}
    ~WindowPrompt() override
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->isEnded = true;
        Post(EndMessage);
    }
    WindowPrompt(const WindowPrompt&) = delete;
    WindowPrompt& operator=(const WindowPrompt&) = delete;

    void ShowBrowserProblem() override
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->hasBrowserProblem = true;
        Post(BrowserProblemMessage);
    }

private:
    void Post(UINT message) const
    {
        if (shared_->window != nullptr)
            PostMessageW(shared_->window, message, 0, 0);
    }

    const std::shared_ptr<Shared> shared_;
};

/// Owned by the thread that runs it.
struct Job
{
    PromptText text;
    PromptActions actions;
    std::shared_ptr<Shared> shared;
};

unsigned int WINAPI RunWindow(void* parameter)
{
    const std::unique_ptr<Job> job(static_cast<Job*>(parameter));
    try
    {
        Window(job->text, job->actions, job->shared).Run();
    }
    catch (const std::exception&)
    {
        job->actions.notShown(); // Such as out of memory.
    }
    const std::lock_guard lock(job->shared->mutex);
    job->shared->window = nullptr;
    return 0;
}

} // namespace

SignInWindows::~SignInWindows()
{
    for (const Handle& thread : threads_)
        WaitForSingleObject(thread.get(), CloseLimit);
}

std::unique_ptr<Prompt> SignInWindows::Show(PromptText text, PromptActions actions)
{
    threads_.erase(
        std::remove_if(threads_.begin(), threads_.end(),
                       [](const Handle& thread) { return WaitForSingleObject(thread.get(), 0) == WAIT_OBJECT_0; }),
        threads_.end());
    auto shared = std::make_shared<Shared>();
    auto job = std::make_unique<Job>(Job{std::move(text), std::move(actions), shared});
    // Not waited for: the thread that shows a prompt serves the hosts.
    Handle thread(reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, &RunWindow, job.get(), 0, nullptr)));
    if (!thread)
        job->actions.notShown();
    else
    {
        job.release(); // NOLINT(bugprone-unused-return-value): the thread owns it.
        threads_.push_back(std::move(thread));
    }
    return std::make_unique<WindowPrompt>(std::move(shared));
}

} // namespace Kestrany::Agent::OpenId

// NOLINTEND(performance-no-int-to-ptr)
