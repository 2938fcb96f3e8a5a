#ifndef ORLINDEX_DOCTOR_FULLPATH_H
#define ORLINDEX_DOCTOR_FULLPATH_H

#include <string>

namespace Orlindex::Doctor {

/// Absolute, from the current directory, without a final separator. Empty where the platform takes it for no path.
std::wstring FullPath(const std::wstring& path);

} // namespace Orlindex::Doctor

#endif
