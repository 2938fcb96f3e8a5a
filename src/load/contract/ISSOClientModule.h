#ifndef ORLINDEX_CONTRACT_ISSOCLIENTMODULE_H
#define ORLINDEX_CONTRACT_ISSOCLIENTMODULE_H

namespace Kestrany::IdentityServices {

/// Starts and stops the plugin, and names the product. Texts are UTF-16 with a terminating zero.
class ISSOClientModule
{
public:
    virtual void Reserved0() = 0;
    /// Slot 1. Called once per start, before the client is used; a plugin may create its client only here.
    virtual void Initialize(bool flag) = 0;
    virtual void Reserved2() = 0;
    /// Slot 3. Stops the plugin; the module stays loaded and may be initialized again.
    virtual void Uninitialize() = 0;
    /// Slot 4. `capacity` in UTF-16 units; returns the length written, 0 or less if there is no name.
    virtual int GetProductName(wchar_t* buffer, int capacity) = 0;
    virtual void SetProductName(const wchar_t* name) = 0;

protected:
    ~ISSOClientModule() = default;
};

} // namespace Kestrany::IdentityServices

#endif
