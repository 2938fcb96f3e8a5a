#include "plugin/NoThrow.h"

#include <exception>
#include <string>

#include <windows.h>

#include "plugin/Plugin.h"

namespace Kestrany::Agent {

namespace {

std::string CurrentException()
{
    try
    {
        throw;
    }
    catch (const std::exception& exception)
    {
        return exception.what();
    }
    catch (...)
    {
        return "unknown exception";
    }
}

} // namespace

void ReportException() noexcept
{
    try
    {
        Plugin::Get().Log(TALIXLog::Error, "An operation failed: " + CurrentException());
    }
    catch (...)
    {
        // Most likely out of memory, of which the debugger's output needs none.
        OutputDebugStringW(L"PellwickClient: an operation failed, and so did the log\n");
    }
}

} // namespace Kestrany::Agent
