// Where the controls are, for each size of the window and each resolution.
#ifndef DESKTOP_HOST_LAYOUT_H
#define DESKTOP_HOST_LAYOUT_H

#include <windows.h>

namespace DesktopHost {

/// A length of 96 units an inch, in pixels of a resolution.
int Scale(int length, UINT dpi);

/// Moves the controls. Sizes follow the font, so that texts fit with every font size that the user has set.
void LayOut(HWND window, HFONT font, UINT dpi);

/// The size of the window, in pixels: at first, and the least one.
SIZE InitialSize(UINT dpi);
SIZE LeastSize(UINT dpi);

} // namespace DesktopHost

#endif
