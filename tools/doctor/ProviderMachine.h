#ifndef ORLINDEX_DOCTOR_PROVIDERMACHINE_H
#define ORLINDEX_DOCTOR_PROVIDERMACHINE_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace Orlindex::Doctor {

// What this machine says about a provider without a request to it.

/// The addresses of a host name.
struct NameResolution
{
    int error = 0; ///< Of Windows Sockets; 0 if there is an address.
    std::vector<std::string> addresses;
};

/// Asks the system. An IP address, with brackets if it is of version 6, is its own address.
NameResolution ResolveName(const std::string& host);

/// Whether a listener on the loopback address can have the port; 0 for any. Returns the error of Windows Sockets, 0 if
/// it can. `redirectHost`: 127.0.0.1, [::1] or localhost.
int TryPort(const std::string& redirectHost, std::uint16_t port);

/// The system's time in UTC: "2026-01-31T12:00:00Z".
std::string SystemTimeText(std::chrono::system_clock::time_point time);

} // namespace Orlindex::Doctor

#endif
