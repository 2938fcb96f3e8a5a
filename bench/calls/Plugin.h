#ifndef ORLINDEX_BENCH_PLUGIN_H
#define ORLINDEX_BENCH_PLUGIN_H

namespace Kestrany::IdentityServices {
class ISSOClient;
}

namespace OrlindexBench {

/// The client of the loaded plugin module, which the floor calls directly.
Kestrany::IdentityServices::ISSOClient& LoadedClient();

} // namespace OrlindexBench

#endif
