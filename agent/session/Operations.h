#ifndef AGENT_SESSION_OPERATIONS_H
#define AGENT_SESSION_OPERATIONS_H

namespace Kestrany::Agent::Operations {

// Names of the operations in messages and in the faults of scenarios.
inline constexpr char Attach[] = "attach";
inline constexpr char Login[] = "login";
inline constexpr char AutomatedLogin[] = "automatedLogin";
inline constexpr char Logout[] = "logout";
inline constexpr char CancelLogin[] = "cancelLogin";
inline constexpr char GetStatus[] = "getStatus";
inline constexpr char GetUser[] = "getUser";
inline constexpr char GetAccessToken[] = "getAccessToken";
inline constexpr char GetIdToken[] = "getIdToken";
inline constexpr char RefreshToken[] = "refreshToken";
inline constexpr char GetSessionUri[] = "getSessionUri";
inline constexpr char Restore[] = "restore";
inline constexpr char GetFeatures[] = "getFeatures";

} // namespace Kestrany::Agent::Operations

#endif
