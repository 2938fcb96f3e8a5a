#ifndef AGENT_TESTS_OWNJOB_H
#define AGENT_TESTS_OWNJOB_H

#include <stdexcept>

#include <windows.h>

namespace Kestrany::Agent {

/// Puts this process and its child processes into a job that ends with it: a failed or killed test leaves no process
/// behind. The handle stays open until the process ends, because closing it ends this process, too.
inline void JoinOwnJob()
{
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job == nullptr || !SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) ||
        !AssignProcessToJobObject(job, GetCurrentProcess()))
        throw std::runtime_error("no job for the tests");
}

} // namespace Kestrany::Agent

#endif
