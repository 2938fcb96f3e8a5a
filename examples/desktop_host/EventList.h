// The list of events.
#ifndef DESKTOP_HOST_EVENTLIST_H
#define DESKTOP_HOST_EVENTLIST_H

#include <windows.h>

#include "Session.h"

namespace DesktopHost {

void PrepareEventList(HWND list);

/// Adds the event at the end, with the time of day, and shows it.
void AddEvent(HWND list, const Event& event);

} // namespace DesktopHost

#endif
