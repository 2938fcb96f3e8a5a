#ifndef AGENT_PLUGIN_TEXTIN_H
#define AGENT_PLUGIN_TEXTIN_H

#include <string>

#include "session/ResultCodes.h"

namespace Kestrany::Agent {

/// Takes a text that must be there and not be empty over as UTF-8.
IdErrorCode TakeWide(const wchar_t* text, std::string& taken);

/// Takes an address over likewise. IdInvalidText also for one that holds a replacement character (U+FFFD): the library
/// puts it in the place of what is not well formed in a host's UTF-8.
IdErrorCode TakeAddress(const wchar_t* text, std::string& taken);

/// Takes a UTF-8 text over; a null one is empty.
IdErrorCode TakeNarrow(const char* text, std::string& taken);
/// Takes a UTF-8 text over from a buffer of `capacity` bytes; what lies behind it is not read.
IdErrorCode TakeNarrow(const char* text, int capacity, std::string& taken);

} // namespace Kestrany::Agent

#endif
