// The types that the class interface adds, as a C++ host sees them.

#include <cstdint>
#include <type_traits>

#include "orlindex/IdServicesAutomation.h"
#include "orlindex/IdServicesMgr.h"

using namespace Kestrany::IdentityServices;

static_assert(std::is_same_v<IdErrorCode, talix_status_code>, "one numeric space for both interfaces");

template <class Record>
constexpr bool IsPlain = std::is_standard_layout_v<Record> && std::is_trivial_v<Record>;
static_assert(IsPlain<talix_user_info> && IsPlain<talix_proxy_info> && IsPlain<talix_buffer> &&
              IsPlain<talix_versions>);

static_assert(std::is_same_v<std::underlying_type_t<ApiFeature>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<IdServicesConsts::IdServicesEvent>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<IdServicesAutomation::OverridingType>, std::int32_t>);
static_assert(ApiFeatureIdToken == 2 && ApiFeatureLoginMode == 3);
static_assert(IdServicesAutomation::Call == 0 && IdServicesAutomation::Backoff == 1);

static_assert(IdServicesConsts::LoggedIn == 0);
static_assert(IdServicesConsts::LoggedOut == 1);
static_assert(IdServicesConsts::LoggingOut == 2);
static_assert(IdServicesConsts::AboutToLogout == 3);
static_assert(IdServicesConsts::AccountCreated == 4);
static_assert(IdServicesConsts::TokenRefreshed == 5);
static_assert(IdServicesConsts::TokenAvailable == 6);
static_assert(IdServicesConsts::ServerChanged == 7);
static_assert(IdServicesConsts::LoginRestored == 8);
static_assert(IdServicesConsts::LoginDialogTimeoutInIdIPCServer == 9);
