#ifndef ORLINDEX_LOCATE_REFERENCEEXPANSION_H
#define ORLINDEX_LOCATE_REFERENCEEXPANSION_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// Answers whether a variable has a value, and fills it.
using VariableLookup = std::function<bool(const std::wstring& name, std::wstring& value)>;

/// Replaces each reference %Name% by its value, once: a value is not expanded again. A reference without a value stays.
/// Answers how many references there were, with a value or without.
std::int32_t ExpandPathVariables(std::wstring& text, const VariableLookup& lookup);

/// The same for every entry of a list, in order.
void ExpandPathVariables(std::vector<std::wstring>& texts, const VariableLookup& lookup);

/// Whether a reference stands at the beginning; after the expansion, one that has no value.
bool BeginsWithReference(const std::wstring& text);

} // namespace Kestrany::IdentityServices

#endif
