#ifndef AGENT_PLUGIN_NOTHROW_H
#define AGENT_PLUGIN_NOTHROW_H

namespace Kestrany::Agent {

// No exception may pass from one module to the other: they may come from different compilers. Every operation of the
// contract does its work within one of these guards.

/// Logs the exception that is being handled. Throws nothing.
void ReportException() noexcept;

/// Returns the work's result, or `onFailure` if it throws.
template <class Result, class Work>
Result NoThrow(Result onFailure, Work&& work) noexcept
{
    try
    {
        return work();
    }
    catch (...)
    {
        ReportException();
        return onFailure;
    }
}

template <class Work>
void NoThrow(Work&& work) noexcept
{
    try
    {
        work();
    }
    catch (...)
    {
        ReportException();
    }
}

} // namespace Kestrany::Agent

#endif
