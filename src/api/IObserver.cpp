#include "orlindex/IObserver.h"

namespace Kestrany::IdentityServices {

IObserver::~IObserver() = default;

} // namespace Kestrany::IdentityServices
