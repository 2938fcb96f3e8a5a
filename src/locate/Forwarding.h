#ifndef ORLINDEX_LOCATE_FORWARDING_H
#define ORLINDEX_LOCATE_FORWARDING_H

#include <type_traits>
#include <utility>

#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {

// The common form of all forwarding members: obtain the interface, then call the operation or return the fallback. The
// operation is a template argument: it determines the interface, and the call compiles to one virtual call.

template <class Operation>
struct InterfaceOf;

template <class Result, class Interface, class... Arguments>
struct InterfaceOf<Result (Interface::*)(Arguments...)>
{
    using Type = Interface;
};

template <class Interface>
inline Interface* ObtainInterface()
{
    SSOPathResolver* manager = SSOPathResolver::GetInstance();
    if constexpr (std::is_same_v<Interface, ISSOClient>)
        return manager->GetSSOClient();
    else if constexpr (std::is_same_v<Interface, ISSOClientPrivate>)
        return manager->GetSSOClientPrivate();
    else if constexpr (std::is_same_v<Interface, ISSOClientModule>)
        return manager->GetSSOClientModule();
    else
        return manager->GetSSOServerManager();
}

template <auto Operation, class Result, class... Arguments>
Result Forward(Result fallback, Arguments&&... arguments)
{
    auto* target = ObtainInterface<typename InterfaceOf<decltype(Operation)>::Type>();
    return target ? static_cast<Result>((target->*Operation)(std::forward<Arguments>(arguments)...)) : fallback;
}

/// For operations without a result.
template <auto Operation, class... Arguments>
void ForwardOnly(Arguments&&... arguments)
{
    if (auto* target = ObtainInterface<typename InterfaceOf<decltype(Operation)>::Type>())
        (target->*Operation)(std::forward<Arguments>(arguments)...);
}

} // namespace Kestrany::IdentityServices

#endif
