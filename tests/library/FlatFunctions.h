#ifndef ORLINDEX_LIBRARY_FLATFUNCTIONS_H
#define ORLINDEX_LIBRARY_FLATFUNCTIONS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "orlindex/talix.h"
#include "plugin/Slots.h"

namespace OrlindexTest {

/// Arguments that every flat function accepts, all with different values. The records point into
/// the object itself, so that a comparison of its bytes shows every write.
struct FlatArguments
{
    FlatArguments();
    FlatArguments(const FlatArguments&) = delete;
    FlatArguments& operator=(const FlatArguments&) = delete;

    std::string Bytes() const { return {reinterpret_cast<const char*>(this), sizeof *this}; }

    char text[64] = "untouched";
    char otherText[64] = "untouched, too";
    talix_buffer buffer{};
    talix_user_info userInfo{};
    talix_proxy_info proxyInfo{};
    /// From talix_create_product_config; null while the library is not initialized.
    talix_product_config config = nullptr;
    void* window = reinterpret_cast<void*>(std::uintptr_t{0xFEDCBA9876543210});
};

/// What the function makes of the plugin's result.
enum class ResultRule
{
    Mapped,   ///< A value below IdSuccess becomes IdFailed.
    Unmapped, ///< Passed on as it is.
    YesOrNo,  ///< Passed on as 1 or 0.
    Fixed,    ///< The result never depends on it.
    Quit      ///< True is IdSuccess, false IdServerQuitFailed.
};

/// A flat function with one set of valid arguments, and what it must return in each state of the library. All but
/// talix_init and talix_deinit, which change the state.
struct FlatFunction
{
    const char* name;
    /// Calls it; returns its result as a number, 0 if it has none.
    std::function<std::int64_t(FlatArguments&)> call;
    /// Result while the library is not initialized.
    std::int64_t notInitialized;
    /// Result while the plugin has neither a client nor a server-process interface.
    std::int64_t withoutClient;
    ResultRule rule = ResultRule::Fixed;
    /// The operation that it forwards to, if any.
    std::optional<PluginOperation> operation = std::nullopt;
    /// The arguments that the plugin must see, as the journal shows them.
    std::function<testing::Matcher<std::string>(const FlatArguments&)> arguments = {};
    /// The feature that it asks for first (Client::IsApiAvailable), 0 if it asks for none.
    int feature = 0;
    /// Result when the plugin throws.
    std::int64_t thrown = IdFailed;
    /// What must have happened before, for the operation to be reached.
    std::function<void(FlatArguments&)> prepare = [](FlatArguments&) {};
};

const std::vector<FlatFunction>& FlatFunctions();

} // namespace OrlindexTest

#endif
