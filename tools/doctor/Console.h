#ifndef ORLINDEX_DOCTOR_CONSOLE_H
#define ORLINDEX_DOCTOR_CONSOLE_H

#include <string_view>
#include <windows.h>

namespace Orlindex::Doctor {

/// The standard output or error stream. Takes UTF-8: a console is given its own kind of text, all else the bytes.
class Console
{
public:
    explicit Console(DWORD standardHandle);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    /// Leaves the console in the mode in which it was.
    ~Console();

    void Write(std::string_view utf8) const;
    /// Makes the console understand colour sequences. False where it is no console, or cannot.
    bool EnableColor();

private:
    HANDLE handle_;
    DWORD mode_ = 0;
    bool console_;
    bool changed_ = false;
};

} // namespace Orlindex::Doctor

#endif
