#ifndef AGENT_CONNECTION_PRIVATEPIPE_H
#define AGENT_CONNECTION_PRIVATEPIPE_H

#include <string>

#include "platform/Deadline.h"
#include "platform/Handle.h"

namespace Kestrany::Agent {

enum class PipeKind
{
    Messages,
    Bytes
};

/// The server's end of a pipe that only processes of the same user can open, on this machine. `first`: none when
/// somebody else has the name, who would get what is meant for this process. Null, with GetLastError, without success.
Handle CreatePrivatePipe(const std::wstring& name, PipeKind kind, bool first, DWORD instances, DWORD bufferSize);

/// The other end. Waits for its turn until the deadline. Null, with GetLastError, without success.
Handle OpenPrivatePipe(const std::wstring& name, const Deadline& deadline);

} // namespace Kestrany::Agent

#endif
