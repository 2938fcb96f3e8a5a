#include "identity/simulated/KeyStore.h"

#include <memory>
#include <optional>
#include <stdexcept>

#include "identity/Json.h"
#include "identity/simulated/Token.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Crypto.h"
#include "platform/DataProtection.h"
#include "platform/Folders.h"
#include "platform/ObjectNamespace.h"
#include "platform/SigningKey.h"

namespace Kestrany::Agent::Simulated {

namespace {

constexpr std::string_view KeyPurpose = "Kestrany.TALIX.SigningKey";
constexpr std::size_t MaxFile = 64 * 1024;

/// Held while a process looks for the key and creates it.
class KeyLock
{
public:
    KeyLock() : mutex_(CreateMutexW(nullptr, FALSE, SessionObjectName("Key").c_str()))
    {
        constexpr DWORD limit = 10'000;
        const DWORD result = mutex_ ? WaitForSingleObject(mutex_.get(), limit) : WAIT_FAILED;
        if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED)
            throw std::runtime_error("the signing key is in use by another process");
    }
    ~KeyLock() { ReleaseMutex(mutex_.get()); }
    KeyLock(const KeyLock&) = delete;
    KeyLock& operator=(const KeyLock&) = delete;

private:
    Handle mutex_;
};

/// nullopt if there is no key yet. A key that cannot be read is not replaced: issued tokens would no longer verify.
std::optional<SigningKey> ReadKey(const std::wstring& file)
{
    const FileContents contents = ReadFileContents(file, MaxFile);
    if (!contents.IsRead())
    {
        if (IsMissingFile(contents.error))
            return std::nullopt;
        throw std::runtime_error("the signing key in " + Narrow(file) +
                                 " cannot be read: " + SystemMessage(contents.error));
    }
    try
    {
        if (const std::optional<std::string> key = Unprotect(contents.bytes, KeyPurpose))
            return SigningKey::Import(*key);
    }
    catch (const std::invalid_argument&)
    {
        // Handled like bytes that cannot be decrypted.
    }
    throw std::runtime_error("the signing key in " + Narrow(file) +
                             " is damaged, or was not written by this user on this machine; restore it, or delete it: "
                             "then a new one is made, and tokens of the old one do not verify any more");
}

SigningKey MakeKey(const std::wstring& file, const LogSink& log)
{
    SigningKey key = SigningKey::Generate();
    if (!ReplaceFileAtomically(file, Protect(key.Export(), KeyPurpose)))
        throw std::runtime_error("the signing key cannot be written to " + Narrow(file) + ": " +
                                 SystemMessage(GetLastError()));
    log(TALIXLog::Info, "New signing key in " + Narrow(file));
    return key;
}

/// The public key as a JSON Web Key, with exactly the members of its thumbprint (RFC 7638).
Json::Value PublicKey(const SigningKey& key)
{
    Json::Value object(Json::objectValue);
    object["crv"] = "P-256";
    object["kty"] = "EC";
    object["x"] = Base64Url(key.X());
    object["y"] = Base64Url(key.Y());
    return object;
}

void Publish(const Json::Value& publicKey, const std::string& keyId, const LogSink& log)
{
    Json::Value key = publicKey;
    key["kid"] = keyId;
    key["alg"] = "ES256";
    key["use"] = "sig";
    Json::Value set(Json::objectValue);
    set["keys"].append(key);
    const std::wstring file = SettingsFolder() + L"\\simulator-jwks.json";
    const std::string text = WriteJson(set) + "\n";
    if (ReadFileContents(file, MaxFile).bytes != text && !ReplaceFileAtomically(file, text))
        log(TALIXLog::Warning,
            "The public key cannot be written to " + Narrow(file) + ": " + SystemMessage(GetLastError()));
}

} // namespace

TokenSigner OpenSigningKey(const LogSink& log)
{
    if (SettingsFolder().empty())
        throw std::runtime_error("the user has no local application data");
    const std::wstring file = SettingsFolder() + L"\\signing-key.protected";
    const KeyLock lock;
    std::optional<SigningKey> read = ReadKey(file);
    const auto key = std::make_shared<const SigningKey>(read ? std::move(*read) : MakeKey(file, log));
    const Json::Value publicKey = PublicKey(*key);
    const std::string keyId = Base64Url(Sha256(WriteJson(publicKey)));
    Publish(publicKey, keyId, log);
    return {keyId, [key](const std::string& text) { return key->Sign(text); }};
}

} // namespace Kestrany::Agent::Simulated
