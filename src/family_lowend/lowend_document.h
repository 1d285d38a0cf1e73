// What the LowEnd family does with JSON beyond what the library does: keys that may be missing,
// numbers that fit in no int, text out of values of any depth. Documents come from the device and
// may hold anything.
#ifndef TVRSCN_FAMILY_LOWEND_LOWEND_DOCUMENT_H
#define TVRSCN_FAMILY_LOWEND_LOWEND_DOCUMENT_H

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace tvrscn {

// What stands under a key; null where value is no object or has no such key. value keeps it.
const nlohmann::json* member(const nlohmann::json& value, const char* key);

// Cuts the fraction, and what lies beyond an int to the nearest one; no number (NaN) gives 0.
std::int32_t truncateToInt32(double number);

// The number as the library converts it: of a whole number the low 32 bits, of a Boolean 0 or 1,
// and the library's type error for anything else. Fractions are truncated as above, where the
// library's own conversion is undefined.
std::int32_t toInt32(const nlohmann::json& value);

// The value as dump() writes it, compact, but without recursion: the depth of a document is the
// device's choice, the size of the stack is not.
std::string compactText(const nlohmann::json& value);

}  // namespace tvrscn

#endif  // TVRSCN_FAMILY_LOWEND_LOWEND_DOCUMENT_H
