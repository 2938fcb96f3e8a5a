// Makes the compiler lay out the virtual table of every interface that crosses the library's boundary.

#include "load/contract/IPluginLogger.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientFactory.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "orlindex/IObserver.h"
#include "orlindex/OverridingConfig.h"
#include "orlindex/ProductConfig.h"

using namespace Kestrany::IdentityServices;

/// The constructor needs the table, so the compiler lays it out without any implementation.
template <class Interface>
struct TableOf : Interface
{
    TableOf();
};

template <class Interface>
TableOf<Interface>::TableOf()
{
}

template struct TableOf<BaseConfig>;
template struct TableOf<IObserver>;
template struct TableOf<IPluginLogger>;
template struct TableOf<IPluginLoggerSource>;
template struct TableOf<ISSOClient>;
template struct TableOf<ISSOClientFactory>;
template struct TableOf<ISSOClientModule>;
template struct TableOf<ISSOClientPrivate>;
template struct TableOf<ISSOServerManager>;
template struct TableOf<ProductConfig>;
