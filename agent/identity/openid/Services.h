#ifndef AGENT_IDENTITY_OPENID_SERVICES_H
#define AGENT_IDENTITY_OPENID_SERVICES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "identity/Base64Url.h"
#include "identity/openid/Secret.h"

namespace Kestrany::Agent::OpenId {

// What the portable core needs of its process. Every implementation may be called by several threads.

// --- Time and random bytes ------------------------------------------------------------------------------------------

using TimePoint = std::chrono::system_clock::time_point;
using Clock = std::function<TimePoint()>;
/// Milliseconds that only grow.
using Ticks = std::function<std::int64_t()>;
/// Waits. False if the operation was cancelled meanwhile.
using Pause = std::function<bool(std::chrono::milliseconds)>;

// --- HTTP -----------------------------------------------------------------------------------------------------------

/// A request: POST with a form if there is one, else GET.
struct HttpRequest
{
    std::string url;
    std::string accept = "application/json";
    std::optional<Secret> form;        ///< Form-encoded parameters.
    Secret bearer;                     ///< The access token to present; empty for none.
    std::size_t maxReply = 0;          ///< Bytes of the body; a longer one is ReplyTooLarge.
    std::chrono::milliseconds limit{}; ///< For the whole request, from the connection to the last byte.
};

/// Why there is no complete reply.
enum class HttpProblem
{
    None,
    NameNotResolved, ///< The host has no address.
    NotConnected,    ///< No connection, so the provider has not seen the request.
    TlsRefused,      ///< The certificate or the TLS version; the provider has not seen the request.
    TimedOut,        ///< The request's limit has passed; the provider may have seen it.
    ConnectionLost,  ///< The provider may have seen the request.
    ReplyTooLarge,
    Failed ///< The system refused something.
};

struct HttpReply
{
    HttpProblem problem = HttpProblem::None;
    std::string detail; ///< The system's text for the problem.
    int status = 0;
    std::string contentType;
    std::string retryAfter; ///< Header fields as they came; empty if there is none.
    std::string date;
    Secret body;
};

/// Sends requests. Verifies the certificate of every https address, follows no redirect, stores no cookie, and reads no
/// more than the request allows.
class Http
{
public:
    virtual ~Http() = default;
    virtual HttpReply Send(const HttpRequest& request) = 0;
};

// --- Hashes and signatures ------------------------------------------------------------------------------------------

enum class HashAlgorithm
{
    Sha256,
    Sha384,
    Sha512
};

enum class SignatureScheme
{
    RsaPkcs1, ///< RSASSA-PKCS1-v1_5
    RsaPss,   ///< RSASSA-PSS; the salt is as long as the hash, and MGF1 uses the same hash
    Ecdsa     ///< The signature is r and s, each as long as the curve's field
};

/// A public key. Numbers are big-endian.
struct PublicKey
{
    enum class Type
    {
        Rsa,
        P256,
        P384
    };
    Type type = Type::Rsa;
    std::string modulus; ///< RSA; without leading zeros.
    std::string exponent;
    std::string x; ///< Elliptic curves; as long as the curve's field.
    std::string y;
};

class Signatures
{
public:
    virtual ~Signatures() = default;
    /// Throws std::runtime_error on failure.
    virtual std::string Digest(HashAlgorithm algorithm, std::string_view bytes) = 0;
    /// Whether the signature of the text was made with the private key that belongs to `key`. False also for a key that
    /// is not valid, and on failure.
    virtual bool Verify(const PublicKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text,
                        std::string_view signature) = 0;
};

// --- Browser --------------------------------------------------------------------------------------------------------

class Browser
{
public:
    virtual ~Browser() = default;
    /// Opens a short address. False if the system refuses; true says nothing about a window. May wait for the system.
    virtual bool Open(const std::string& address) = 0;
};

/// What the browser gets.
struct PageReply
{
    int status = 404;
    std::string page;    ///< HTML; empty with a location.
    Secret location;     ///< Of a redirect.
    bool isLast = false; ///< Once the browser has it, the port is closed.
};

/// A server for the browser of this machine. Its end closes the port; replies that were begun are still sent.
class LoopbackListener
{
public:
    virtual ~LoopbackListener() = default;
    virtual unsigned int Port() const = 0;
};

class LoopbackListeners
{
public:
    /// Called on a thread of the listeners, for one request at a time of each listener.
    using Handler = std::function<PageReply(std::string_view method, std::string_view target)>;

    virtual ~LoopbackListeners() = default;
    /// Listens at a port of this machine that no other program has: at the first one of `ports` that is free, or at any
    /// free one if there are none. `host`: 127.0.0.1, [::1] or localhost. Null if there is no free port; `problem` then
    /// says why.
    virtual std::unique_ptr<LoopbackListener> Listen(const std::string& host, const std::vector<std::uint16_t>& ports,
                                                     Handler handler, std::string& problem) = 0;
};

// --- The user -------------------------------------------------------------------------------------------------------

/// What a user reads who is expected to sign in.
struct PromptText
{
    bool isDevice = false; ///< Another device is used, at `address` with `userCode`.
    std::string provider;  ///< The issuer.
    std::string address;
    std::string userCode;
};

/// What the user can do. Called on any thread; they return at once.
struct PromptActions
{
    std::function<void()> openBrowser;
    std::function<std::string()> newAddress; ///< An address to copy.
    std::function<void()> cancel;
    std::function<void()> notShown; ///< The prompt cannot be shown, such as in a session without a screen.
};

/// While it exists, the user sees that a sign-in waits.
class Prompt
{
public:
    virtual ~Prompt() = default;
    /// The browser could not be opened.
    virtual void ShowBrowserProblem() = 0;
};

class Prompts
{
public:
    virtual ~Prompts() = default;
    virtual std::unique_ptr<Prompt> Show(PromptText text, PromptActions actions) = 0;
};

} // namespace Kestrany::Agent::OpenId

#endif
