#include "Console.h"

#include <string>

#include "base/Text.h"

namespace Orlindex::Doctor {

Console::Console(DWORD standardHandle)
    : handle_(GetStdHandle(standardHandle)), console_(GetConsoleMode(handle_, &mode_) != FALSE)
{
}

Console::~Console()
{
    if (changed_)
        SetConsoleMode(handle_, mode_);
}

void Console::Write(std::string_view utf8) const
{
    if (console_)
    {
        const std::wstring text = Kestrany::IdentityServices::Widen(utf8);
        DWORD written = 0;
        WriteConsoleW(handle_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    while (!utf8.empty())
    {
        DWORD written = 0;
        if (!WriteFile(handle_, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr) || written == 0)
            return; // Nobody reads any more.
        utf8.remove_prefix(written);
    }
}

bool Console::EnableColor()
{
    constexpr DWORD virtualTerminal = 4; // ENABLE_VIRTUAL_TERMINAL_PROCESSING; older headers lack it.
    changed_ = changed_ || (console_ && SetConsoleMode(handle_, mode_ | virtualTerminal));
    return changed_;
}

} // namespace Orlindex::Doctor
