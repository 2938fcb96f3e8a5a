#ifndef AGENT_PROTOCOL_FRAME_H
#define AGENT_PROTOCOL_FRAME_H

#include <cstddef>
#include <optional>
#include <string>

namespace Kestrany::Agent {

// A pipe carries bytes; each message stands behind its length in 4 bytes, the lowest first.

std::string WriteFrame(const std::string& message);

/// Finds the messages in what arrives, however it was cut.
class FrameReader
{
public:
    void Add(const char* bytes, std::size_t size) { pending_.append(bytes, size); }
    /// The next whole message, if there is one.
    std::optional<std::string> Next();
    /// A length beyond MaxMessage was announced: nothing that comes from there makes sense any more.
    bool IsBroken() const { return broken_; }

private:
    std::string pending_;
    bool broken_ = false;
};

} // namespace Kestrany::Agent

#endif
