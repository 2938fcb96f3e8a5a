#ifndef ORLINDEX_LIBRARY_SYSTEMTEXT_H
#define ORLINDEX_LIBRARY_SYSTEMTEXT_H

#include <algorithm>
#include <string>
#include <windows.h>

#include "support/Text.h"

namespace OrlindexTest {

/// The system's text for an error, as it appears in captured output.
inline std::string SystemText(DWORD code)
{
    wchar_t text[512];
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, LANG_USER_DEFAULT, text, 512, nullptr);
    std::string shown = ToUtf8({text, length});
    shown.erase(std::remove(shown.begin(), shown.end(), '\r'), shown.end());
    return shown;
}

} // namespace OrlindexTest

#endif
