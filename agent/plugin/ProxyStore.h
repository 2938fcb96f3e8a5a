#ifndef AGENT_PLUGIN_PROXYSTORE_H
#define AGENT_PLUGIN_PROXYSTORE_H

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "identity/LoginService.h"

namespace Kestrany::Agent {

/// Settings of proxy servers, one set for each host and port. Host names are not case-sensitive.
/// Any thread may call.
class ProxyStore
{
public:
    IdErrorCode Store(ProxySettings settings);
    /// The settings for `host` and `port`; with an empty host those that were stored last.
    std::optional<ProxySettings> Find(const std::string& host, unsigned int port) const;
    void Clear();

private:
    mutable std::mutex mutex_;
    std::vector<ProxySettings> proxies_; ///< The latest one last.
};

} // namespace Kestrany::Agent

#endif
