#include "plugin/Plugin.h"

/// What the library looks up, under the name that the Microsoft compiler gives this declaration.
Kestrany::IdentityServices::ISSOClientFactory* GetSSOClientFactory()
{
    try
    {
        return &Kestrany::Agent::Plugin::Get();
    }
    catch (...)
    {
        return nullptr; // Out of memory; the library then answers that the client is unavailable.
    }
}
