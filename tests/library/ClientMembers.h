#ifndef ORLINDEX_LIBRARY_CLIENTMEMBERS_H
#define ORLINDEX_LIBRARY_CLIENTMEMBERS_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orlindex/IdServicesMgr.h"
#include "plugin/Slots.h"

namespace OrlindexTest {

/// Arguments, all with different values.
struct MemberArguments
{
    Kestrany::IdentityServices::ProductConfig config;
    talix_user_info userInfo{};
    talix_proxy_info proxyInfo{};
    wchar_t text[64] = L"untouched";
    char profile[64] = "untouched";
    int profileSize = 64;
    int result = 4711;
    talix_login_mode mode = static_cast<talix_login_mode>(4711);
    Kestrany::IdentityServices::IObserver* observer =
        reinterpret_cast<Kestrany::IdentityServices::IObserver*>(std::uintptr_t{0x123450});
};

/// A member of IdServicesMgr that forwards to one operation of the plugin's client interface.
struct ClientMember
{
    const char* name;
    PluginOperation operation;
    /// Calls it; returns its result as a number, 0 if it has none.
    std::function<std::int64_t(Kestrany::IdentityServices::IdServicesMgr&, MemberArguments&)> call;
    /// The arguments that the plugin must see, as the journal shows them.
    std::function<std::string(const MemberArguments&)> arguments;
    /// What the plugin returns in turn; the caller gets each unchanged unless `fixedResult` is set.
    std::vector<std::int64_t> pluginResults;
    /// Result without a client interface.
    std::int64_t fallback;
    /// Result whatever the plugin returns; 0 if the plugin's own is passed on.
    std::int64_t fixedResult = 0;
};

/// Every such member.
const std::vector<ClientMember>& ClientMembers();

} // namespace OrlindexTest

#endif
