// Light, dark and high contrast, as the user has set the system.
#ifndef DESKTOP_HOST_APPEARANCE_H
#define DESKTOP_HOST_APPEARANCE_H

#include <memory>
#include <type_traits>

#include <windows.h>

#include <commctrl.h>

namespace DesktopHost {

struct DeleteGdiObject
{
    void operator()(void* object) const { DeleteObject(object); }
};
using Brush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, DeleteGdiObject>;
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, DeleteGdiObject>;

/// The font of the system's messages for a resolution.
Font MessageFont(UINT dpi);

/// In the light setting and in high contrast, the controls draw themselves with the system's colours. The dark setting
/// has no system colours for programs like this one, so the members below draw what the system would draw light.
class Appearance
{
public:
    /// Reads the user's setting, and applies it to the window and its controls.
    void Apply(HWND window);

    /// For WM_ERASEBKGND. False if the system shall draw.
    bool DrawBackground(HWND window, HDC context) const;

    /// For WM_CTLCOLORSTATIC and similar messages. Null if the system shall choose.
    HBRUSH ControlColors(HDC context) const;

    /// For NM_CUSTOMDRAW of a button or a header. The result for the control.
    LRESULT DrawButton(const NMCUSTOMDRAW& draw) const;
    LRESULT DrawHeader(const NMCUSTOMDRAW& draw) const;

private:
    bool dark_ = false;
    Brush background_;
};

} // namespace DesktopHost

#endif
