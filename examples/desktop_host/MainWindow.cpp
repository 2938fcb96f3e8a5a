#include "MainWindow.h"

#include <utility>

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

/// The parameters of messages carry pointers and handles as numbers.
template <class Pointer, class Number>
Pointer FromParameter(Number parameter)
{
    return reinterpret_cast<Pointer>(parameter); // NOLINT(performance-no-int-to-ptr)
}

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
        auto* const created = FromParameter<MainWindow*>(lParam);
        created->window_ = window;
        created->OnInit();
        return TRUE; // The system sets the focus to the first control that can have it.
    }
    auto* const self = FromParameter<MainWindow*>(GetWindowLongPtrW(window, DWLP_USER));
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
    const auto* const notification = message == WM_NOTIFY ? FromParameter<const NMHDR*>(lParam) : nullptr;
    const bool isHeader = notification != nullptr &&
                          notification->hwndFrom == FromParameter<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    if (isHeader && notification->code == NM_CUSTOMDRAW)
        return FromParameter<MainWindow*>(self)->appearance_.DrawHeader(*FromParameter<const NMCUSTOMDRAW*>(lParam));
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
        FromParameter<MINMAXINFO*>(lParam)->ptMinTrackSize = {least.cx, least.cy};
        return 0;
    }
    case WM_DPICHANGED:
        OnDpiChanged(LOWORD(wParam), *FromParameter<const RECT*>(lParam));
        return 0;
    case WM_SETTINGCHANGE: // light or dark, high contrast, the size of texts
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
        SetDpi(dpi_);
        appearance_.Apply(window_);
        return 0;
    case WM_ERASEBKGND:
        if (!appearance_.DrawBackground(window_, FromParameter<HDC>(wParam)))
            return std::nullopt;
        return TRUE;
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORBTN: {
        const HBRUSH brush = appearance_.ControlColors(FromParameter<HDC>(wParam));
        if (brush == nullptr)
            return std::nullopt;
        return reinterpret_cast<LRESULT>(brush);
    }
    case WM_NOTIFY: {
        const auto* const header = FromParameter<const NMHDR*>(lParam);
        if (header->code != NM_CUSTOMDRAW || header->idFrom == IDC_EVENTS)
            return std::nullopt;
        return appearance_.DrawButton(*FromParameter<const NMCUSTOMDRAW*>(lParam));
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
    const auto module = FromParameter<HINSTANCE>(GetWindowLongPtrW(window_, GWLP_HINSTANCE));
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
        if (state_.running == Task::SignIn)
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
        if (state_.running == Task::SignIn)
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
    if (state_.running == Task::SignIn)
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
    if (state_.running || state_.hasFailed)
        return;
    state_.running = task;
    state_.message.clear();
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
        SetFocusToNext(window_, ToDisplay(state_));
}

void MainWindow::Cancel()
{
    state_.isCancelling = true;
    if (!state_.isCancelBusy)
    {
        state_.isCancelBusy = true;
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
    const std::optional<Task> before = state_.running;
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
    if (!before || state_.running)
        return;
    if (before == Task::Start)
        SetFocusToNext(window_, ToDisplay(state_)); // Until now, no button could have it.
    else
        ReturnFocus();
}

void MainWindow::Take(const Outcome& outcome)
{
    if (outcome.task == Task::Cancel)
    {
        state_.isCancelBusy = false;
        return;
    }
    state_.user = outcome.state;
    if (outcome.task == Task::Read)
    {
        isReadBusy_ = false;
        return;
    }
    state_.running.reset();
    if (outcome.task == Task::SignIn)
    {
        state_.isCancelling = false;
        KillTimer(window_, CancelTimer);
    }
    if (outcome.task == Task::Start)
    {
        state_.isStarted = outcome.code == IdSuccess;
        state_.hasFailed = !state_.isStarted;
        if (state_.hasFailed)
        {
            state_.message = StartFailureText(outcome.code);
            return;
        }
        session_->ListenTo([this](const Event& event) { OnEvent(event); });
        SetTimer(window_, EventTimer, EventInterval, nullptr);
        SetTimer(window_, ClockTimer, ClockInterval, nullptr);
        return;
    }
    if (IsCancelled(outcome.code))
        state_.message = Meaning(outcome.code);
    else if (outcome.code != IdSuccess)
        state_.message = TaskFailureText(outcome.task, outcome.code);
}

void MainWindow::OnEvent(const Event& event)
{
    AddEvent(Control(IDC_EVENTS), event);
    Read(); // Another host may have signed the user in or out.
}

void MainWindow::Update()
{
    if (Show(window_, ToDisplay(state_)))
        LayOut(window_, font_.get(), dpi_);
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
