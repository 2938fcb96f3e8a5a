#ifndef ORLINDEX_LOCATE_PATHVARIABLES_H
#define ORLINDEX_LOCATE_PATHVARIABLES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

// Path variables, such as %ExePath%, in configured texts. Portable: fuzzed and tested natively.

/// Sets `value` to the variable's value. Returns false if it has none.
using VariableLookup = std::function<bool(const std::wstring& name, std::wstring& value)>;

/// Replaces each reference %Name% by its value, once: values are not expanded again. A reference without a value stays
/// as it is. Returns the number of references, with or without a value.
std::int32_t ExpandPathVariables(std::wstring& text, const VariableLookup& lookup);

/// Expands every entry of a list, in order.
void ExpandPathVariables(std::vector<std::wstring>& texts, const VariableLookup& lookup);

/// Whether the text begins with a reference. After the expansion, that reference has no value.
bool BeginsWithPathVariable(const std::wstring& text);

} // namespace Kestrany::IdentityServices

#endif
