#ifndef ORLINDEX_LOCATE_STARTSURROUNDINGS_H
#define ORLINDEX_LOCATE_STARTSURROUNDINGS_H

#include <string>

namespace Kestrany::IdentityServices {

class StartObserver;

/// What is given to a start from outside, where it is retraced for another host than this process or for one module.
/// Empty texts are found out, as a host's always are.
struct StartSurroundings
{
    std::wstring exeDirectory;
    std::wstring libraryDirectory;
    std::wstring serverAppDirectory;
    std::wstring clientPluginModule;
    StartObserver* observer = nullptr;
};

} // namespace Kestrany::IdentityServices

#endif
