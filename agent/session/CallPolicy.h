#ifndef AGENT_SESSION_CALLPOLICY_H
#define AGENT_SESSION_CALLPOLICY_H

#include <mutex>
#include <string>

#include "session/ResultCodes.h"

namespace Kestrany::Agent {

/// How the identity service is called. Times in seconds.
struct CallSettings
{
    int interval = 300;
    int failInterval = 30;
    int minJitter = 0;
    int maxJitter = 10;
    std::string url = "https://production.simulator.invalid/";
};

/// How calls back off after failures. Times in seconds.
struct BackoffSettings
{
    int initialInterval = 1;
    int maxInterval = 60;
    int multiplier = 2;
    int maxRetries = 5;
    int jitter = 1;
};

/// The settings in force. A set with a value out of range is refused whole. Any thread may call.
class CallPolicy
{
public:
    IdErrorCode Override(const CallSettings& settings);
    IdErrorCode Override(const BackoffSettings& settings);
    CallSettings Calls() const;
    BackoffSettings Backoff() const;

private:
    mutable std::mutex mutex_;
    CallSettings calls_;
    BackoffSettings backoff_;
};

} // namespace Kestrany::Agent

#endif
