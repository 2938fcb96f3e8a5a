#ifndef AGENT_PLATFORM_SIGNINGKEY_H
#define AGENT_PLATFORM_SIGNINGKEY_H

#include <string>

#include "platform/Cng.h"

namespace Kestrany::Agent {

/// A private key on the curve P-256.
class SigningKey
{
public:
    /// Creates a key. Throws std::runtime_error on failure, like all of these functions.
    static SigningKey Generate();
    /// Imports the result of Export. Throws std::invalid_argument for any other bytes.
    static SigningKey Import(const std::string& bytes);

    /// The private key as bytes, which the caller has to protect.
    std::string Export() const;
    /// Coordinates of the public key, 32 bytes each.
    const std::string& X() const { return x_; }
    const std::string& Y() const { return y_; }
    /// Signs the SHA-256 digest of a text: r and s, 32 bytes each.
    std::string Sign(const std::string& text) const;

private:
    explicit SigningKey(CngKey key);

    CngKey key_;
    std::string x_;
    std::string y_;
};

} // namespace Kestrany::Agent

#endif
