#ifndef AGENT_IDENTITY_OPENID_SECRET_H
#define AGENT_IDENTITY_OPENID_SECRET_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Kestrany::Agent::OpenId {

/// Overwrites the bytes with zeros. The compiler cannot leave it out, although nobody reads them again.
void ClearMemory(void* bytes, std::size_t size);

/// Overwrites the text's whole buffer with zeros, and makes the text empty.
void ClearText(std::string& text);

/// Compares two texts in a time that depends on their lengths only.
bool AreEqualSecrets(std::string_view left, std::string_view right);

/// A text that must not stay in memory, such as a token: every buffer that held it is cleared before it is freed.
/// Copies are made by name only.
class Secret
{
public:
    Secret() = default;
    explicit Secret(std::string_view text);
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();

    Secret Clone() const { return Secret(View()); }
    std::string_view View() const { return {bytes_.get(), size_}; }
    bool IsEmpty() const { return size_ == 0; }
    std::size_t Size() const { return size_; }
    /// The text's bytes, to be changed in place.
    char* Data() { return bytes_.get(); }

    void Append(std::string_view text);
    /// Makes room for `capacity` bytes in total.
    void Reserve(std::size_t capacity);
    void Clear();

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace Kestrany::Agent::OpenId

#endif
