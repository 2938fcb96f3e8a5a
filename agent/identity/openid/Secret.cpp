#include "identity/openid/Secret.h"

#include <algorithm>
#include <utility>

namespace Kestrany::Agent::OpenId {

void ClearMemory(void* bytes, std::size_t size)
{
    volatile char* const target = static_cast<volatile char*>(bytes);
    for (std::size_t index = 0; index < size; ++index)
        target[index] = 0;
}

void ClearText(std::string& text)
{
    // The buffer can still hold the end of a longer text.
    text.resize(text.capacity());
    ClearMemory(text.data(), text.size());
    text.clear();
}

bool AreEqualSecrets(std::string_view left, std::string_view right)
{
    if (left.size() != right.size())
        return false;
    unsigned int difference = 0;
    for (std::size_t index = 0; index < left.size(); ++index)
        difference |= static_cast<unsigned int>(static_cast<unsigned char>(left[index] ^ right[index]));
    return difference == 0;
}

Secret::Secret(std::string_view text)
{
    Append(text);
}

Secret::Secret(Secret&& other) noexcept
    : bytes_(std::move(other.bytes_)), size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0))
{
}

Secret& Secret::operator=(Secret&& other) noexcept
{
    if (this != &other)
    {
        Clear();
        bytes_ = std::move(other.bytes_);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
    }
    return *this;
}

Secret::~Secret()
{
    Clear();
}

void Secret::Append(std::string_view text)
{
    if (text.empty())
        return;
    if (size_ + text.size() > capacity_)
        Reserve(std::max(size_ + text.size(), 2 * capacity_));
    std::copy(text.begin(), text.end(), bytes_.get() + size_);
    size_ += text.size();
}

void Secret::Reserve(std::size_t capacity)
{
    if (capacity <= capacity_)
        return;
    auto bytes = std::make_unique<char[]>(capacity);
    std::copy_n(bytes_.get(), size_, bytes.get());
    if (bytes_)
        ClearMemory(bytes_.get(), capacity_);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
}

void Secret::Clear()
{
    if (bytes_)
        ClearMemory(bytes_.get(), capacity_);
    bytes_.reset();
    size_ = 0;
    capacity_ = 0;
}

} // namespace Kestrany::Agent::OpenId
