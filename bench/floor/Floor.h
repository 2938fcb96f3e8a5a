#ifndef ORLINDEX_FLOOR_FLOOR_H
#define ORLINDEX_FLOOR_FLOOR_H

#include "load/contract/ISSOClient.h"

#if defined(ORLINDEX_BUILDING_FLOOR)
#define ORLINDEX_FLOOR_API __declspec(dllexport)
#else
#define ORLINDEX_FLOOR_API __declspec(dllimport)
#endif

/// The minimum work of a call, written by hand: the benchmarks compare the library's calls with it. It is a separate
/// module, compiled with the library's flags, so that both calls cross one module boundary.
namespace Kestrany::Floor {

using IdentityServices::ISSOClient;

/// Sets the client that the calls use from now on; null for none.
ORLINDEX_FLOOR_API void SetClient(ISSOClient* client);

/// An uncontended recursive lock, a check, a virtual call.
ORLINDEX_FLOOR_API bool IsLoggedIn();
/// The same in a function that no exception may leave, like every function that C calls: the virtual call is then not a
/// tail call.
ORLINDEX_FLOOR_API talix_status_code RefreshToken() noexcept;

/// A zeroed buffer of 8 KiB, the virtual call (without the lock), one conversion, one copy.
ORLINDEX_FLOOR_API talix_status_code GetToken(talix_buffer* token);

} // namespace Kestrany::Floor

#endif
