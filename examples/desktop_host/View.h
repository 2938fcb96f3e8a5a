// Shows a state in the controls of the window.
#ifndef DESKTOP_HOST_VIEW_H
#define DESKTOP_HOST_VIEW_H

#include <string>

#include <windows.h>

namespace DesktopHost {

struct Display
{
    std::wstring status;
    std::wstring user;
    std::wstring token;
    std::wstring message; ///< Without one, its controls are hidden.
    bool isWaiting = false;
    bool canSignIn = false;
    bool canSignOut = false;
    bool canRenew = false;
    bool canCancel = false;
    bool canCopy = false;
};

/// Returns whether controls appeared or disappeared: the layout has to follow.
bool Show(HWND window, const Display& display);

/// Sets the focus to what the user needs next.
void SetFocusToNext(HWND window, const Display& display);

/// Puts the text on the clipboard.
void Copy(HWND window, const std::wstring& text);

} // namespace DesktopHost

#endif
