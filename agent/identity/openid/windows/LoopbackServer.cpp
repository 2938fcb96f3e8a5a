// The only file that includes Boost.Beast, which takes long to compile.

#include "identity/openid/windows/LoopbackServer.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>

#include "identity/openid/Limits.h"

namespace Kestrany::Agent::OpenId {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;
using boost::system::error_code;

/// From the connection to the last byte of the reply.
constexpr std::chrono::seconds ConnectionLimit{15};

/// Connections of one listener; the oldest one makes room for another.
constexpr std::size_t MaxConnections = 16;

/// Connections that are awaited at an address, so that one can come while another one's request is read.
constexpr std::size_t Awaited = 2;

/// Free ports that are tried before there is none.
constexpr int MaxTries = 8;

/// Bytes of a request that is too long, which are read and forgotten.
constexpr std::size_t MaxDrained = 1024 * 1024;

constexpr std::uint32_t MaxHeaders = Limits::RedirectTarget + 16 * 1024;

/// Clears what it frees: a request can hold a code.
template <class T>
struct ClearingAllocator
{
    using value_type = T;

    ClearingAllocator() = default;
    template <class U>
    ClearingAllocator(const ClearingAllocator<U>&) noexcept // NOLINT(google-explicit-constructor): as allocators do
    {
    }
    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* block, std::size_t count) noexcept
    {
        ClearMemory(block, count * sizeof(T));
        std::allocator<T>().deallocate(block, count);
    }
    friend bool operator==(const ClearingAllocator&, const ClearingAllocator&) { return true; }
    friend bool operator!=(const ClearingAllocator&, const ClearingAllocator&) { return false; }
};

const char* ReasonOf(int status)
{
    switch (status)
    {
    case 200:
        return "OK";
    case 302:
        return "Found";
    case 400:
        return "Bad Request";
    case 410:
        return "Gone";
    default:
        return "Not Found";
    }
}

/// The bytes of a reply. Written by hand: its buffer is cleared, because an address can hold a token.
Secret BytesOf(const PageReply& reply)
{
    Secret bytes("HTTP/1.1 " + std::to_string(reply.status) + " " + ReasonOf(reply.status) + "\r\n");
    bytes.Append("Connection: close\r\n"
                 "Cache-Control: no-store\r\n"
                 "Referrer-Policy: no-referrer\r\n"
                 "X-Content-Type-Options: nosniff\r\n"
                 "Content-Security-Policy: default-src 'none'; style-src 'unsafe-inline'; frame-ancestors 'none'\r\n"
                 "Content-Type: text/html; charset=utf-8\r\n");
    if (!reply.location.IsEmpty())
    {
        bytes.Append("Location: ");
        bytes.Append(reply.location.View());
        bytes.Append("\r\n");
    }
    bytes.Append("Content-Length: " + std::to_string(reply.page.size()) + "\r\n\r\n");
    bytes.Append(reply.page);
    return bytes;
}

/// One connection of the browser: one request, one reply.
class Connection : public std::enable_shared_from_this<Connection>
{
public:
    /// `onEnd`: called once the browser has the reply, with whether it is the last one.
    Connection(tcp::socket socket, LoopbackListeners::Handler handler, std::function<void(bool isLast)> onEnd)
        : stream_(std::move(socket)), handler_(std::move(handler)), onEnd_(std::move(onEnd))
    {
        parser_.header_limit(MaxHeaders);
        parser_.body_limit(0);
    }
    ~Connection() { ClearMemory(rest_.data(), rest_.size()); } // The end of a long redirect, for example.
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Start()
    {
        stream_.expires_after(ConnectionLimit);
        http::async_read(stream_, buffer_, parser_, [self = shared_from_this()](error_code error, std::size_t) {
            if (!error)
                self->Reply();
            else if (error.category() == http::make_error_code(http::error::bad_method).category() &&
                     error != http::error::end_of_stream)
                self->Send({400, "<!DOCTYPE html>\n<title>Bad request</title>\n", {}});
        });
    }
    void Close() { stream_.close(); }

private:
    void Reply()
    {
        const auto& request = parser_.get();
        const beast::string_view method = request.method_string();
        const beast::string_view target = request.target();
        Send(handler_({method.data(), method.size()}, {target.data(), target.size()}));
    }
    void Send(const PageReply& reply)
    {
        reply_ = BytesOf(reply);
        isLast_ = reply.isLast;
        error_code error;
        // Most replies fit into the system's buffer: nobody has to wait for them.
        stream_.socket().non_blocking(true, error);
        const std::size_t sent = asio::write(stream_.socket(), asio::buffer(reply_.Data(), reply_.Size()), error);
        if (error != asio::error::would_block)
            return HandleSent(error);
        asio::async_write(stream_, asio::buffer(reply_.Data() + sent, reply_.Size() - sent),
                          [self = shared_from_this()](error_code result, std::size_t) { self->HandleSent(result); });
    }
    void HandleSent(error_code error)
    {
        if (error)
            return;
        stream_.socket().shutdown(tcp::socket::shutdown_send, error);
        Drain();
    }
    /// Reads on until the browser closes: closing with unread bytes would take the reply away from it.
    void Drain()
    {
        stream_.async_read_some(asio::buffer(rest_), [self = shared_from_this()](error_code error, std::size_t size) {
            self->drained_ += size;
            if (!error && self->drained_ < MaxDrained)
                self->Drain();
            else
                self->onEnd_(self->isLast_);
        });
    }

    beast::tcp_stream stream_;
    const LoopbackListeners::Handler handler_;
    const std::function<void(bool isLast)> onEnd_;
    beast::basic_flat_buffer<ClearingAllocator<char>> buffer_{MaxHeaders};
    http::request_parser<http::empty_body, ClearingAllocator<char>> parser_;
    Secret reply_;
    bool isLast_ = false;
    std::array<char, 4096> rest_{};
    std::size_t drained_ = 0;
};

/// Accepts connections at one port.
class Acceptor : public std::enable_shared_from_this<Acceptor>
{
public:
    Acceptor(asio::io_context& context, LoopbackListeners::Handler handler)
        : context_(context), handler_(std::move(handler))
    {
    }

    /// Adds an address. Port 0: any free one.
    error_code Bind(const asio::ip::address& address, unsigned int port)
    {
        tcp::acceptor socket(context_);
        error_code error;
        const tcp::endpoint endpoint(address, static_cast<std::uint16_t>(port));
        socket.open(endpoint.protocol(), error);
        if (!error && address.is_v6())
            socket.set_option(asio::ip::v6_only(true), error);
        if (!error)
            error = SetExclusive(socket);
        if (!error)
            socket.bind(endpoint, error);
        if (!error)
            socket.listen(asio::socket_base::max_listen_connections, error);
        if (!error)
            listening_.push_back({std::move(socket)});
        return error;
    }
    /// Of the first address.
    unsigned int Port() const
    {
        error_code ignored;
        return listening_.front().socket.local_endpoint(ignored).port();
    }
    void Start()
    {
        for (Listening& each : listening_)
            Await(each);
    }
    /// Connections whose request has come are still served.
    void Close()
    {
        isClosed_ = true;
        error_code ignored;
        for (Listening& each : listening_)
            each.socket.close(ignored);
    }
    /// Any thread may call.
    bool IsClosed() const { return isClosed_; }

private:
    struct Listening
    {
        tcp::acceptor socket;
        std::size_t awaited = 0; ///< Connections that may come at once.
    };

    /// Else another program could bind the same port, and receive the redirect.
    static error_code SetExclusive(tcp::acceptor& socket)
    {
        const BOOL exclusive = TRUE;
        if (setsockopt(socket.native_handle(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE,
                       reinterpret_cast<const char*>(&exclusive), sizeof exclusive) == 0)
            return {};
        return {WSAGetLastError(), boost::system::system_category()};
    }
    void Await(Listening& listening)
    {
        for (; !isClosed_ && listening.awaited < Awaited; ++listening.awaited)
            listening.socket.async_accept(
                [self = shared_from_this(), &listening](error_code error, tcp::socket socket) {
                    --listening.awaited;
                    if (self->isClosed_)
                        return;
                    if (!error)
                        self->Adopt(std::move(socket), listening);
                    // Else when the connection ends: the browser's request comes first.
                    if (error || listening.awaited == 0)
                        self->Await(listening);
                });
    }
    void Adopt(tcp::socket socket, Listening& listening)
    {
        connections_.remove_if([](const std::weak_ptr<Connection>& each) { return each.expired(); });
        if (connections_.size() >= MaxConnections)
        {
            if (const std::shared_ptr<Connection> oldest = connections_.front().lock())
                oldest->Close();
            connections_.pop_front();
        }
        const auto connection = std::make_shared<Connection>(std::move(socket), handler_,
                                                             [self = shared_from_this(), &listening](bool isLast) {
                                                                 if (isLast)
                                                                     self->Close();
                                                                 else
                                                                     self->Await(listening);
                                                             });
        connections_.push_back(connection);
        connection->Start();
    }

    asio::io_context& context_;
    const LoopbackListeners::Handler handler_;
    std::list<Listening> listening_; ///< One for each address.
    std::atomic<bool> isClosed_ = false;
    std::list<std::weak_ptr<Connection>> connections_; ///< The oldest first.
};

/// Whether a machine has no such address, as one without IPv6.
bool IsMissingAddress(const error_code& error)
{
    return error == asio::error::address_family_not_supported || error.value() == WSAEADDRNOTAVAIL ||
           error.value() == WSAEPROTONOSUPPORT;
}

} // namespace

/// The thread, and what it runs.
class LoopbackServer::Service
{
public:
    Service() : work_(asio::make_work_guard(context_)), thread_([this] { Run(); }) {}
    // Asio could throw only if it cannot lock, and then nothing can end the thread.
    ~Service() // NOLINT(bugprone-exception-escape)
    {
        context_.stop();
        thread_.join();
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    asio::io_context& Context() { return context_; }

    /// Listens at all addresses of the host, at one port.
    std::shared_ptr<Acceptor> Bind(const std::string& host, unsigned int port, const Handler& handler,
                                   error_code& error)
    {
        auto acceptor = std::make_shared<Acceptor>(context_, handler);
        error = {};
        if (host != "[::1]")
            error = acceptor->Bind(asio::ip::address_v4::loopback(), port);
        if (!error && host != "127.0.0.1")
        {
            // A browser may try either address for "localhost".
            const bool isSecond = host == "localhost";
            error = acceptor->Bind(asio::ip::address_v6::loopback(), isSecond ? acceptor->Port() : port);
            if (isSecond && IsMissingAddress(error))
                error = {};
        }
        return acceptor;
    }

private:
    void Run()
    {
        for (;;)
        {
            try
            {
                context_.run();
                return;
            }
            catch (const std::exception&)
            {
                // Such as out of memory: that request gets no reply, the next one does.
            }
        }
    }

    asio::io_context context_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::thread thread_;
};

namespace {

class Listener final : public LoopbackListener
{
public:
    /// `run`: performs a function on the thread of the acceptor.
    Listener(std::shared_ptr<Acceptor> acceptor, std::function<void(std::function<void()>)> run)
        : port_(acceptor->Port()), acceptor_(std::move(acceptor)), run_(std::move(run))
    {
        run_([acceptor = acceptor_] { acceptor->Start(); });
    }
    ~Listener() override
    {
        if (!acceptor_->IsClosed())
            run_([acceptor = acceptor_] { acceptor->Close(); });
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    unsigned int Port() const override { return port_; }

private:
    const unsigned int port_;
    const std::shared_ptr<Acceptor> acceptor_;
    const std::function<void(std::function<void()>)> run_;
};

} // namespace

LoopbackServer::LoopbackServer() : service_(std::make_shared<Service>()) {}

LoopbackServer::~LoopbackServer() = default;

std::unique_ptr<LoopbackListener> LoopbackServer::Listen(const std::string& host,
                                                         const std::vector<std::uint16_t>& ports, Handler handler,
                                                         std::string& problem)
{
    std::vector<unsigned int> candidates(ports.begin(), ports.end());
    if (candidates.empty())
        candidates.assign(MaxTries, 0); // Any free port; that of one address family may be taken in the other.
    problem.clear();
    for (const unsigned int port : candidates)
    {
        error_code error;
        std::shared_ptr<Acceptor> acceptor = service_->Bind(host, port, handler, error);
        if (!error)
            return std::make_unique<Listener>(std::move(acceptor),
                                              [service = service_](std::function<void()> function) {
                                                  asio::post(service->Context(), std::move(function));
                                              });
        if (port != 0 || problem.empty())
            problem += (problem.empty() ? "port " : "; port ") + std::to_string(port) + ": error " +
                       std::to_string(error.value());
    }
    return nullptr;
}

} // namespace Kestrany::Agent::OpenId
