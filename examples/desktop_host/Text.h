// Texts of the library are UTF-8, texts of windows are UTF-16.
#ifndef DESKTOP_HOST_TEXT_H
#define DESKTOP_HOST_TEXT_H

#include <string>

namespace DesktopHost {

std::wstring FromUtf8(const char* text);

/// The folder of this program, without a backslash at the end.
std::wstring ProgramFolder();

/// The command that examines why sign-in does not start in this program's folder.
std::wstring DoctorCommand();

} // namespace DesktopHost

#endif
