#include "View.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include <commctrl.h>

#include "resource.h"

namespace DesktopHost {

namespace {

bool HasStyle(HWND control, DWORD style)
{
    return (static_cast<DWORD>(GetWindowLongPtrW(control, GWL_STYLE)) & style) != 0;
}

/// Only changes are written: a screen reader reads a text again with each change, and the window would flicker.
bool SetText(HWND control, const std::wstring& text)
{
    std::wstring before(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    before.resize(static_cast<std::size_t>(GetWindowTextW(control, before.data(), static_cast<int>(before.size()))));
    if (before == text)
        return false;
    SetWindowTextW(control, text.c_str());
    return true;
}

bool SetVisible(HWND control, bool visible)
{
    if (HasStyle(control, WS_VISIBLE) == visible)
        return false;
    ShowWindow(control, visible ? SW_SHOWNA : SW_HIDE);
    return true;
}

void ShowProgress(HWND progress, bool visible)
{
    if (SetVisible(progress, visible))
        SendMessageW(progress, PBM_SETMARQUEE, visible ? TRUE : FALSE, 0);
}

int NextFocus(const Display& display)
{
    if (display.canCancel)
        return IDCANCEL;
    if (!display.message.empty())
        return IDC_MESSAGE;
    if (display.canSignIn)
        return IDC_SIGN_IN;
    return display.canSignOut ? IDC_USER : IDC_EVENTS;
}

/// A focused control that is disabled or hidden would keep the focus, and the keyboard would do nothing.
void MoveFocusAndEnable(HWND window, const Display& display)
{
    const std::pair<int, bool> buttons[] = {
        {IDC_SIGN_IN, display.canSignIn},
        {IDC_SIGN_OUT, display.canSignOut},
        {IDC_RENEW, display.canRenew},
        {IDCANCEL, display.canCancel},
    };
    for (const auto& [id, enabled] : buttons)
    {
        if (enabled)
            EnableWindow(GetDlgItem(window, id), TRUE);
    }
    const HWND focused = GetFocus();
    const bool isLost = std::any_of(std::begin(buttons), std::end(buttons), [&](const auto& button) {
        return GetDlgItem(window, button.first) == focused && !button.second;
    });
    const bool isNowhere = GetForegroundWindow() == window && (focused == nullptr || focused == window);
    if (isLost || isNowhere || (focused == GetDlgItem(window, IDC_COPY) && !display.canCopy) ||
        (focused == GetDlgItem(window, IDC_MESSAGE) && display.message.empty()))
        SetFocusToNext(window, display);
    for (const auto& [id, enabled] : buttons)
    {
        if (!enabled)
            EnableWindow(GetDlgItem(window, id), FALSE);
    }
}

/// Screen readers read the text of an alert, wherever the focus is.
void Announce(HWND control)
{
    NotifyWinEvent(EVENT_SYSTEM_ALERT, control, OBJID_CLIENT, CHILDID_SELF);
}

} // namespace

bool Show(HWND window, const Display& display)
{
    const auto control = [window](int id) { return GetDlgItem(window, id); };
    const bool newStatus = SetText(control(IDC_STATUS), display.status);
    SetText(control(IDC_USER), display.user);
    SetText(control(IDC_TOKEN), display.token);
    const bool newMessage = SetText(control(IDC_MESSAGE), display.message);
    ShowProgress(control(IDC_PROGRESS), display.isWaiting);

    const std::pair<int, bool> appearing[] = {
        {IDC_MESSAGE_LABEL, !display.message.empty()},
        {IDC_MESSAGE, !display.message.empty()},
        {IDC_COPY, display.canCopy},
    };
    // The focus moves to a control that is visible, from one that still is.
    bool moved = newMessage; // It may have more lines.
    for (const auto& [id, visible] : appearing)
        moved = (visible && SetVisible(control(id), true)) || moved;
    MoveFocusAndEnable(window, display);
    for (const auto& [id, visible] : appearing)
        moved = (!visible && SetVisible(control(id), false)) || moved;
    if (newMessage && !display.message.empty())
        Announce(control(IDC_MESSAGE));
    else if (newStatus)
        Announce(control(IDC_STATUS));
    return moved;
}

void SetFocusToNext(HWND window, const Display& display)
{
    const HWND control = GetDlgItem(window, NextFocus(display));
    // Unlike SetFocus, this also moves the mark of the default button.
    SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    // The dialog selects the text of a field, as for an input.
    if ((SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0)
        SendMessageW(control, EM_SETSEL, 0, 0);
}

void Copy(HWND window, const std::wstring& text)
{
    if (OpenClipboard(window) == FALSE)
        return; // Another program uses it at this moment.
    EmptyClipboard();
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    void* const place = memory != nullptr ? GlobalLock(memory) : nullptr;
    if (place != nullptr)
    {
        std::memcpy(place, text.c_str(), size);
        GlobalUnlock(memory);
    }
    // After a success, the clipboard owns the memory.
    if (memory != nullptr && (place == nullptr || SetClipboardData(CF_UNICODETEXT, memory) == nullptr))
        GlobalFree(memory);
    CloseClipboard();
}

} // namespace DesktopHost
