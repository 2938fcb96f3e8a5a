#ifndef TESTS_WINDOW_CHECKS_H
#define TESTS_WINDOW_CHECKS_H

#include <string>
#include <vector>

#include "window/Window.h"

namespace WindowTest {

/// Every control that Tab reaches has a name for screen readers: its own text, or that of the text directly before it.
void CheckNames(const Window& window);

/// Every mnemonic letter stands for one visible control.
void CheckMnemonics(const Window& window);

/// The visible controls lie inside the window and do not overlap, and the texts of labels and buttons have room, at
/// this resolution.
void CheckLayout(const Window& window, UINT dpi);

/// The rows of a list view, with " | " between the cells.
std::vector<std::wstring> Rows(const Window& window, HWND list);

/// Changes the resolution of the window, as when it moves to another monitor.
void ChangeDpi(const Window& window, UINT from, UINT to);

} // namespace WindowTest

#endif
