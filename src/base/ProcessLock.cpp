#include "base/ProcessLock.h"

namespace Kestrany::IdentityServices {

ProcessLock processLock;

} // namespace Kestrany::IdentityServices
