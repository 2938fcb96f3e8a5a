#include "plugin/ProxyStore.h"

#include <algorithm>
#include <utility>

namespace Kestrany::Agent {

namespace {

char ToLowerAscii(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool SameHost(const std::string& left, const std::string& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return ToLowerAscii(a) == ToLowerAscii(b); });
}

} // namespace

IdErrorCode ProxyStore::Store(ProxySettings settings)
{
    if (settings.host.empty())
        return IdInvalidProxyHost;
    if (settings.port < 1 || settings.port > 65535)
        return IdInvalidProxyPort;

    const std::lock_guard lock(mutex_);
    const auto sameProxy = [&](const ProxySettings& other) {
        return other.port == settings.port && SameHost(other.host, settings.host);
    };
    proxies_.erase(std::remove_if(proxies_.begin(), proxies_.end(), sameProxy), proxies_.end());
    proxies_.push_back(std::move(settings));
    return IdSuccess;
}

std::optional<ProxySettings> ProxyStore::Find(const std::string& host, unsigned int port) const
{
    const std::lock_guard lock(mutex_);
    const auto wanted = [&](const ProxySettings& proxy) {
        return host.empty() || (static_cast<unsigned int>(proxy.port) == port && SameHost(proxy.host, host));
    };
    const auto found = std::find_if(proxies_.rbegin(), proxies_.rend(), wanted);
    if (found == proxies_.rend())
        return std::nullopt;
    return *found;
}

void ProxyStore::Clear()
{
    const std::lock_guard lock(mutex_);
    proxies_.clear();
}

} // namespace Kestrany::Agent
