#ifndef ORLINDEX_LOCATE_PATHVARIABLES_H
#define ORLINDEX_LOCATE_PATHVARIABLES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

// Path variables, such as %ExePath%, in configured texts. Portable: fuzzed and tested natively.

/// Fills the variable's value. Returns false if there is none.
using VariableLookup = std::function<bool(const std::wstring& name, std::wstring& value)>;

/// Replaces each reference %Name% by its value, once: a value is not expanded again. A reference without a value stays.
/// Returns the number of references, with a value or without.
std::int32_t ExpandPathVariables(std::wstring& text, const VariableLookup& lookup);

/// The same for every entry of a list, in order.
void ExpandPathVariables(std::vector<std::wstring>& texts, const VariableLookup& lookup);

/// Whether the text begins with a reference. After the expansion, that is one without a value.
bool BeginsWithPathVariable(const std::wstring& text);

} // namespace Kestrany::IdentityServices

#endif
