#include "protocol/Frame.h"

#include <cstdint>

#include "protocol/Message.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t HeaderSize = 4;

} // namespace

std::string WriteFrame(const std::string& message)
{
    std::string frame;
    for (std::size_t index = 0; index < HeaderSize; ++index)
        frame += static_cast<char>(message.size() >> (8 * index) & 0xFF);
    return frame + message;
}

std::optional<std::string> FrameReader::Next()
{
    if (broken_ || pending_.size() < HeaderSize)
        return std::nullopt;
    std::uint32_t size = 0;
    for (std::size_t index = 0; index < HeaderSize; ++index)
        size |= static_cast<std::uint32_t>(static_cast<unsigned char>(pending_[index])) << (8 * index);
    if (size > MaxMessage)
    {
        broken_ = true;
        pending_.clear();
        return std::nullopt;
    }
    if (pending_.size() - HeaderSize < size)
        return std::nullopt;
    std::string message = pending_.substr(HeaderSize, size);
    pending_.erase(0, HeaderSize + size);
    return message;
}

} // namespace Kestrany::Agent
