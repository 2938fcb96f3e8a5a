#ifndef ORLINDEX_LIBRARY_PRIVATEMEMBERS_H
#define ORLINDEX_LIBRARY_PRIVATEMEMBERS_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "orlindex/IdServicesMgr.h"
#include "orlindex/ProductConfig.h"
#include "orlindex/RetrySchedule.h"
#include "plugin/Slots.h"

namespace OrlindexTest {

/// Arguments, all with different values. The outputs are set before the call.
struct PrivateArguments
{
    PrivateArguments();
    PrivateArguments(const PrivateArguments&) = delete;
    PrivateArguments& operator=(const PrivateArguments&) = delete;

    /// Everything that a member can write to, as one text.
    std::string Outputs() const;

    Server server = static_cast<Server>(4711);
    Kestrany::IdentityServices::ProductConfig config;
    Kestrany::IdentityServices::ProductConfig otherConfig;
    Kestrany::StdUtil::RetrySchedule schedule{4712, {{1, 2}, {-3, 4}}};
    std::map<std::string, std::string> message{{"before", "untouched"}};
    std::int64_t processId = -4713;
    char text[32] = "untouched";
    char otherText[32] = "untouched, too";
    wchar_t wideText[32] = L"untouched, and wide";
    char* buffers[2] = {text, otherText};
    const char* texts[2] = {"--first", "--second"};
};

/// A result of the plugin, and what the caller must get then.
struct PassedOn
{
    std::int64_t fromPlugin;
    std::string result;
};

/// A member of the private and server-process classes that forwards to one operation of the plugin.
struct PrivateMember
{
    std::string name;
    PluginOperation operation;
    /// Calls it; returns its result as a text, an empty one if it has none.
    std::function<std::string(PrivateArguments&)> call;
    /// What the plugin must see, as the journal shows it between the brackets.
    std::function<testing::Matcher<std::string>(const PrivateArguments&)> arguments;
    std::vector<PassedOn> results;
    /// Result without the interface.
    std::string fallback;
};

/// Every such member of SSOClientPrivate and SSOServerManager, and the one of IdServicesMgr.
std::vector<PrivateMember> PrivateMembers();

std::string Shown(const Kestrany::StdUtil::RetrySchedule& schedule);

/// A manager object without state, which the library did not make: to call members that need none.
Kestrany::IdentityServices::IdServicesMgr& ManagerWithoutState();

} // namespace OrlindexTest

#endif
