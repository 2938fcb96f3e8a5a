#ifndef AGENT_PLUGIN_BARRIER_H
#define AGENT_PLUGIN_BARRIER_H

namespace Kestrany::Agent {

// No exception may pass from one module to the other: they may come from different compilers. Every operation of the
// contract does its work through one of these.

/// Writes the exception that is being handled to the log. Throws nothing.
void ReportException() noexcept;

/// The work's answer, or `onFailure` when it throws.
template <class Result, class Work>
Result Guarded(Result onFailure, Work&& work) noexcept
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
void Guarded(Work&& work) noexcept
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
