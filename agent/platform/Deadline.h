#ifndef AGENT_PLATFORM_DEADLINE_H
#define AGENT_PLATFORM_DEADLINE_H

#include <cstdint>

#include <windows.h>

namespace Kestrany::Agent {

/// A point in time that limits several waits.
class Deadline
{
public:
    /// A limit of 0 or less has already passed.
    explicit Deadline(std::int64_t milliseconds)
        : limit_(milliseconds < 0 ? 0 : static_cast<std::uint64_t>(milliseconds)), start_(GetTickCount64())
    {
    }

    /// Milliseconds left, for wait functions. Never INFINITE: a wait of more than 49 days ends early.
    DWORD Left() const
    {
        const std::uint64_t passed = GetTickCount64() - start_;
        const std::uint64_t left = passed < limit_ ? limit_ - passed : 0;
        return left < INFINITE ? static_cast<DWORD>(left) : INFINITE - 1;
    }

private:
    std::uint64_t limit_;
    std::uint64_t start_;
};

} // namespace Kestrany::Agent

#endif
