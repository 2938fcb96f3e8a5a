#include "MainWindow.h"

#include <cstdio>
#include <ctime>
#include <iterator>

#include <commctrl.h>

#include "Codes.h"
#include "EventList.h"
#include "Layout.h"
#include "Text.h"
#include "resource.h"

namespace DesktopHost {

namespace {

constexpr UINT OutcomeMessage = WM_APP;
constexpr UINT ActivatedMessage = WM_APP + 1;

// Timers, in milliseconds.
constexpr UINT_PTR EventTimer = 1;
constexpr UINT EventInterval = 100;
constexpr UINT_PTR ClockTimer = 2;
constexpr UINT ClockInterval = 1000;
constexpr UINT_PTR CancelTimer = 3;
constexpr UINT CancelInterval = 500;
constexpr UINT_PTR CloseTimer = 4;
constexpr UINT CloseLimit = 30000;

/// Since Windows 10, version 1703, a dialog resizes its controls itself when the resolution changes. Layout.cpp does
/// that here.
void TurnOffDialogScaling(HWND window)
{
    using Function = BOOL(WINAPI*)(HWND, int, int);
    constexpr int DisableAll = 1; // DDC_DISABLE_ALL
    const HMODULE user = GetModuleHandleW(L"user32.dll");
    const auto set = reinterpret_cast<Function>(
        reinterpret_cast<void*>(user != nullptr ? GetProcAddress(user, "SetDialogDpiChangeBehavior") : nullptr));
    if (set != nullptr)
        set(window, DisableAll, DisableAll);
}

std::wstring FailureText(const wchar_t* what, talix_status_code code)
{
    return std::wstring(what) + L"\r\nCode " + CodeText(code) + L": " + Meaning(code);
}

std::wstring StartFailureText(talix_status_code code)
{
    std::wstring text = FailureText(L"Sign-in is not available.", code);
    if (code == IdRunningAsLocalSystem)
        return text + L"\r\nStart the program as the user who signs in.";
    // A second start in this process would fail at once.
    return text + L"\r\nTo find out why, run this command. Then start this program again.\r\n" + DoctorCommand();
}

const wchar_t* FailedTask(Task task)
{
    switch (task)
    {
    case Task::SignIn:
        return L"The sign-in failed.";
    case Task::SignOut:
        return L"The sign-out failed.";
    default:
        return L"The token was not renewed.";
    }
}

} // namespace

HWND MainWindow::Create(HINSTANCE module)
{
    return CreateDialogParamW(module, MAKEINTRESOURCEW(IDD_MAIN), nullptr, &MainWindow::Procedure,
                              reinterpret_cast<LPARAM>(this));
}

INT_PTR CALLBACK MainWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG)
    {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        auto* const created = reinterpret_cast<MainWindow*>(lParam);
        created->window_ = window;
        created->OnInit();
        return TRUE; // The system sets the focus to the first control that can have it.
    }
    auto* const self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, DWLP_USER));
    if (self == nullptr)
        return FALSE;
    const std::optional<LRESULT> result = self->Handle(message, wParam, lParam);
    if (!result)
        return FALSE;
    // For these messages a dialog procedure returns the result itself.
    if (message == WM_CTLCOLORSTATIC || message == WM_CTLCOLOREDIT || message == WM_CTLCOLORBTN)
        return static_cast<INT_PTR>(*result);
    SetWindowLongPtrW(window, DWLP_MSGRESULT, *result);
    return TRUE;
}

/// A header notifies its list only, not the window.
LRESULT CALLBACK MainWindow::ListProcedure(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                           DWORD_PTR self)
{
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lParam)->code == NM_CUSTOMDRAW)
        return reinterpret_cast<MainWindow*>(self)->appearance_.DrawHeader(
            *reinterpret_cast<const NMCUSTOMDRAW*>(lParam));
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(list, &MainWindow::ListProcedure, id);
    return DefSubclassProc(list, message, wParam, lParam);
}

std::optional<LRESULT> MainWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case OutcomeMessage:
        TakeOutcomes();
        return 0;
    case WM_ACTIVATE:
        // The dialog gives the focus back to the control that had it. That one may be disabled now.
        if (LOWORD(wParam) != WA_INACTIVE)
            PostMessageW(window_, ActivatedMessage, 0, 0);
        return std::nullopt;
    case ActivatedMessage:
        Update();
        return 0;
    case WM_COMMAND:
        if (HIWORD(wParam) != BN_CLICKED)
            return std::nullopt;
        OnCommand(LOWORD(wParam));
        return 0;
    case WM_TIMER:
        OnTimer(wParam);
        return 0;
    case WM_SIZE:
        LayOut(window_, font_.get(), dpi_);
        return 0;
    case WM_GETMINMAXINFO: {
        const SIZE least = LeastSize(dpi_);
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {least.cx, least.cy};
        return 0;
    }
    case WM_DPICHANGED:
        OnDpiChanged(LOWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_SETTINGCHANGE: // light or dark, high contrast, the size of texts
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
        SetDpi(dpi_);
        appearance_.Apply(window_);
        return 0;
    case WM_ERASEBKGND:
        if (!appearance_.DrawBackground(window_, reinterpret_cast<HDC>(wParam)))
            return std::nullopt;
        return TRUE;
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORBTN: {
        const HBRUSH brush = appearance_.ControlColors(reinterpret_cast<HDC>(wParam));
        if (brush == nullptr)
            return std::nullopt;
        return reinterpret_cast<LRESULT>(brush);
    }
    case WM_NOTIFY: {
        const auto* const header = reinterpret_cast<const NMHDR*>(lParam);
        if (header->code != NM_CUSTOMDRAW || header->idFrom == IDC_EVENTS)
            return std::nullopt;
        return appearance_.DrawButton(*reinterpret_cast<const NMCUSTOMDRAW*>(lParam));
    }
    case WM_CLOSE:
        OnClose();
        return 0;
    case WM_ENDSESSION:
        // The system ends the process after this message, whether calls still run or not.
        if (wParam != FALSE)
            OnClose();
        return 0;
    case WM_DESTROY:
        OnDestroy();
        return 0;
    default:
        return std::nullopt;
    }
}

void MainWindow::OnInit()
{
    TurnOffDialogScaling(window_);
    const auto module = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(window_, GWLP_HINSTANCE));
    const HICON icon = LoadIconW(module, MAKEINTRESOURCEW(IDI_APPLICATION_ICON));
    SendMessageW(window_, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
    SendMessageW(window_, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
    PrepareEventList(Control(IDC_EVENTS));
    SetWindowSubclass(Control(IDC_EVENTS), &MainWindow::ListProcedure, 1, reinterpret_cast<DWORD_PTR>(this));

    const UINT dpi = GetDpiForWindow(window_);
    SetDpi(dpi != 0 ? dpi : USER_DEFAULT_SCREEN_DPI);
    const SIZE size = InitialSize(dpi_);
    SetWindowPos(window_, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    appearance_.Apply(window_);

    session_ = std::make_unique<Session>(window_, OutcomeMessage);
    Begin(Task::Start);
}

void MainWindow::OnCommand(int control)
{
    switch (control)
    {
    case IDC_SIGN_IN:
        Begin(Task::SignIn);
        break;
    case IDC_SIGN_OUT:
        Begin(Task::SignOut);
        break;
    case IDC_RENEW:
        Begin(Task::Renew);
        break;
    case IDCANCEL:
        if (running_ == Task::SignIn)
            Cancel();
        break;
    case IDC_COPY:
        Copy(window_, DoctorCommand());
        break;
    default:
        break;
    }
}

void MainWindow::OnTimer(UINT_PTR timer)
{
    switch (timer)
    {
    case EventTimer:
        session_->DispatchEvents();
        break;
    case ClockTimer:
        Update();
        break;
    case CancelTimer:
        // A request that came before the login itself ended nothing.
        if (running_ == Task::SignIn)
            Cancel();
        break;
    case CloseTimer:
        // A call does not return. ExitProcess would end its thread while it holds locks that the modules' clean-up
        // needs.
        TerminateProcess(GetCurrentProcess(), 1);
        break;
    default:
        break;
    }
}

void MainWindow::OnDpiChanged(UINT dpi, const RECT& area)
{
    SetDpi(dpi);
    SetWindowPos(window_, nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    LayOut(window_, font_.get(), dpi_); // also if the size stayed
}

/// The window disappears at once. The process ends when no call runs any more: the library must not stop before.
void MainWindow::OnClose()
{
    if (isClosing_)
        return;
    isClosing_ = true;
    ShowWindow(window_, SW_HIDE);
    if (session_->IsIdle())
    {
        DestroyWindow(window_);
        return;
    }
    SetTimer(window_, CloseTimer, CloseLimit, nullptr);
    if (running_ == Task::SignIn)
        Cancel();
}

void MainWindow::OnDestroy()
{
    for (const UINT_PTR timer : {EventTimer, ClockTimer, CancelTimer, CloseTimer})
        KillTimer(window_, timer);
    session_.reset();
    PostQuitMessage(0);
}

void MainWindow::Begin(Task task)
{
    if (running_ || hasFailed_)
        return;
    running_ = task;
    message_.clear();
    session_->Begin(task);
    focusBefore_ = GetFocus();
    Update();
    focusMeanwhile_ = GetFocus();
}

/// The button that began the task was disabled and lost the focus. It gets it back, unless the user went elsewhere.
void MainWindow::ReturnFocus()
{
    if (focusMeanwhile_ == focusBefore_ || GetFocus() != focusMeanwhile_)
        return;
    if (focusBefore_ != nullptr && IsWindowEnabled(focusBefore_) != FALSE)
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(focusBefore_), TRUE);
    else
        SetFocusToNext(window_, ToDisplay());
}

void MainWindow::Cancel()
{
    isCancelling_ = true;
    if (!isCancelBusy_)
    {
        isCancelBusy_ = true;
        session_->Begin(Task::Cancel);
        SetTimer(window_, CancelTimer, CancelInterval, nullptr);
    }
    Update();
}

void MainWindow::Read()
{
    isReadDue_ = isReadBusy_;
    if (isReadBusy_ || isClosing_)
        return;
    isReadBusy_ = true;
    session_->Begin(Task::Read);
}

void MainWindow::TakeOutcomes()
{
    const std::optional<Task> before = running_;
    for (const Outcome& outcome : session_->TakeOutcomes())
        Take(outcome);
    if (isReadDue_ && !isReadBusy_)
        Read();
    if (isClosing_ && session_->IsIdle())
    {
        DestroyWindow(window_);
        return;
    }
    Update();
    if (!before || running_)
        return;
    if (before == Task::Start)
        SetFocusToNext(window_, ToDisplay()); // Until now, no button could have it.
    else
        ReturnFocus();
}

void MainWindow::Take(const Outcome& outcome)
{
    if (outcome.task == Task::Cancel)
    {
        isCancelBusy_ = false;
        return;
    }
    state_ = outcome.state;
    if (outcome.task == Task::Read)
    {
        isReadBusy_ = false;
        return;
    }
    running_.reset();
    if (outcome.task == Task::SignIn)
    {
        isCancelling_ = false;
        KillTimer(window_, CancelTimer);
    }
    if (outcome.task == Task::Start)
    {
        isStarted_ = outcome.code == IdSuccess;
        hasFailed_ = !isStarted_;
        if (hasFailed_)
        {
            message_ = StartFailureText(outcome.code);
            return;
        }
        session_->ListenTo([this](const Event& event) { OnEvent(event); });
        SetTimer(window_, EventTimer, EventInterval, nullptr);
        SetTimer(window_, ClockTimer, ClockInterval, nullptr);
        return;
    }
    if (IsCancelled(outcome.code))
        message_ = Meaning(outcome.code);
    else if (outcome.code != IdSuccess)
        message_ = FailureText(FailedTask(outcome.task), outcome.code);
}

void MainWindow::OnEvent(const Event& event)
{
    AddEvent(Control(IDC_EVENTS), event);
    Read(); // Another host may have signed the user in or out.
}

void MainWindow::Update()
{
    if (Show(window_, ToDisplay()))
        LayOut(window_, font_.get(), dpi_);
}

Display MainWindow::ToDisplay() const
{
    Display display;
    display.status = Status();
    display.user = state_.signedIn ? state_.userName : L"";
    display.token = TokenText();
    display.message = message_;
    display.isWaiting = running_.has_value();
    // A Cancel that still runs would end the next login.
    const bool isReady = isStarted_ && !running_ && !isCancelBusy_;
    display.canSignIn = isReady && !state_.signedIn;
    display.canSignOut = isReady && state_.signedIn;
    display.canRenew = display.canSignOut;
    display.canCancel = running_ == Task::SignIn;
    display.canCopy = hasFailed_;
    return display;
}

std::wstring MainWindow::Status() const
{
    if (hasFailed_)
        return L"Sign-in is not available";
    if (!running_)
        return state_.signedIn ? L"Signed in" : L"Not signed in";
    switch (*running_)
    {
    case Task::SignIn:
        return isCancelling_ ? L"Cancelling the sign-in..." : L"Signing in...";
    case Task::SignOut:
        return L"Signing out...";
    case Task::Renew:
        return L"Renewing the token...";
    default:
        return L"Starting...";
    }
}

std::wstring MainWindow::TokenText() const
{
    if (!state_.signedIn)
        return {};
    if (state_.tokenExpiry == 0)
        return state_.tokenExpired ? L"Expired" : L"Valid";
    const std::int64_t left = state_.tokenExpiry - static_cast<std::int64_t>(std::time(nullptr));
    if (left <= 0)
        return L"Expired";
    wchar_t text[64] = L"";
    std::swprintf(text, std::size(text), L"Expires in %lld:%02lld:%02lld", static_cast<long long>(left / 3600),
                  static_cast<long long>(left / 60 % 60), static_cast<long long>(left % 60));
    return text;
}

void MainWindow::SetDpi(UINT dpi)
{
    dpi_ = dpi;
    Font font = MessageFont(dpi_);
    for (HWND control = GetWindow(window_, GW_CHILD); control != nullptr; control = GetWindow(control, GW_HWNDNEXT))
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), FALSE);
    font_ = std::move(font); // The controls used the former font until now.
    LayOut(window_, font_.get(), dpi_);
}

} // namespace DesktopHost
