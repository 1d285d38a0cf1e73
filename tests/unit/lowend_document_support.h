// What the tests of the LowEnd documents share: a value of each JSON type, and what is thrown.
#ifndef TVRSCN_TESTS_UNIT_LOWEND_DOCUMENT_SUPPORT_H
#define TVRSCN_TESTS_UNIT_LOWEND_DOCUMENT_SUPPORT_H

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace tvrscn::test {

struct TypedValue {
  const char* text;
  const char* type;  // as the JSON library names it
};
constexpr TypedValue kTypedValues[] = {
    {"null", "null"},    {"true", "boolean"}, {"false", "boolean"}, {"7", "number"},
    {"-7", "number"},    {"7.5", "number"},   {"\"7\"", "string"},  {"\"\"", "string"},
    {"[true]", "array"}, {"[]", "array"},     {"{}", "object"},     {"{\"busy\":true}", "object"},
    {"[[7]]", "array"},
};

// The text of the JSON library's exception that the action ends with.
template <typename Action>
std::string thrownBy(Action action) {
  try {
    action();
  } catch (const nlohmann::json::exception& error) {
    return error.what();
  }
  return "nothing";
}

// Such an exception begins with its number.
template <typename Action>
bool throwsNumber(int number, Action action) {
  const std::string text = thrownBy(action);
  return text.rfind("[json.exception.", 0) == 0 &&
         text.find("." + std::to_string(number) + "]") != std::string::npos;
}

constexpr int kParseError = 101;
constexpr int kTypeError = 302;
constexpr int kNumberTooLarge = 406;
constexpr int kTextIsNoUtf8 = 316;

// Texts that are no JSON document.
inline const std::string kNoDocuments[] = {
    "",
    " ",
    "x",
    "{",
    "}",
    "[1",
    "{\"status\":{}",
    "{\"status\":{}} {}",
    "{'status':{}}",
    "{\"status\":{},}",
    "{\"status\":{}} // all is well",
    "/* all is well */ {\"status\":{}}",
    "{\"status\":\"\xFF\"}",               // no UTF-8
    "{\"status\":\"\xC3\"}",               // half a character
    "{\"status\":\"\xED\xA0\x80\"}",       // half of a pair
    "{\"status\":\"a\nb\"}",               // a line feed in a text
    "{\"status\":\"\\uD800\"}",            // half of a pair, spelt out
    std::string("\0{\"status\":{}}", 14),  // a zero byte ends the text
    std::string(1024 * 1024, '['),
};

// The pattern with its at signs replaced: each by the next value, those behind by the last one.
inline std::string filled(std::string_view pattern,
                          std::initializer_list<std::string_view> values) {
  std::string text;
  auto value = values.begin();
  for (const char letter : pattern) {
    if (letter != '@') {
      text += letter;
      continue;
    }
    text += *value;
    if (value + 1 != values.end()) ++value;
  }
  return text;
}

// value in so many lists.
inline std::string nested(std::size_t depth, const std::string& value) {
  return std::string(depth, '[') + value + std::string(depth, ']');
}
constexpr std::size_t kVeryDeep = 500000;

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_UNIT_LOWEND_DOCUMENT_SUPPORT_H
