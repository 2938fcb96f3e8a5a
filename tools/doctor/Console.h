#ifndef ORLINDEX_DOCTOR_CONSOLE_H
#define ORLINDEX_DOCTOR_CONSOLE_H

#include <string_view>
#include <windows.h>

namespace Orlindex::Doctor {

/// The standard output or error stream. Takes UTF-8, which a console gets as UTF-16 and anything else as it is.
class Console
{
public:
    explicit Console(DWORD standardHandle);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    /// Restores the console's mode.
    ~Console();

    void Write(std::string_view utf8) const;
    /// Enables colour sequences. False if the stream is not a console, or the console does not support them.
    bool EnableColor();

private:
    HANDLE handle_;
    DWORD mode_ = 0;
    bool console_;
    bool changed_ = false;
};

} // namespace Orlindex::Doctor

#endif
