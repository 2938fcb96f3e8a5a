// Flat interface: versions.

#include "api/BoundedCopy.h"
#include "api/FlatGuard.h"
#include "base/Product.h"
#include "locate/Registry.h"

using namespace Kestrany::IdentityServices;

talix_status_code TALIX_CALL talix_get_versions(talix_versions* versions)
{
    return Guarded(IdFailed, [&] {
        if (!versions) // By contract no failure: there is nothing to write.
            return IdSuccess;
        const bool server = versions->server_version && versions->server_version_size != 0;
        const bool sdk = versions->sdk_version && versions->sdk_version_size != 0;
        if (!server && !sdk)
            return IdInvalidVersionRecord;

        const std::string serverVersion = GetLatestRegistryLocation(ServerApplicationKey).version;
        // By contract both are copied without a look at their sizes, also when only one is usable: the runtime's copy
        // rejects a target that is null or too small. Where both share one buffer, the second text stays.
        BoundedCopy(versions->server_version, CallerCapacity(versions->server_version_size), serverVersion.c_str());
        BoundedCopy(versions->sdk_version, CallerCapacity(versions->sdk_version_size), ProductVersion);
        return IdSuccess;
    });
}
