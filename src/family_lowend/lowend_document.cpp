#include "family_lowend/lowend_document.h"

#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

namespace tvrscn {
namespace {

using nlohmann::json;

// A list or an object whose elements are being written.
struct Level {
  const json* container;
  json::const_iterator next;
};

class CompactWriter {
 public:
  std::string write(const json& root) {
    open(root);
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.container->cend()) {
        text_ += level.container->is_object() ? '}' : ']';
        levels_.pop_back();
      } else {
        writeElement(level);
      }
    }
    return std::move(text_);
  }

 private:
  // Writes a single value, or the beginning of a list or an object.
  void open(const json& value) {
    if (value.is_structured()) {
      text_ += value.is_object() ? '{' : '[';
      levels_.push_back({&value, value.cbegin()});
    } else {
      text_ += value.dump();
    }
  }

  // Opening the element may move the levels: the level is done with before.
  void writeElement(Level& level) {
    if (level.next != level.container->cbegin()) text_ += ',';
    if (level.container->is_object()) text_ += json(level.next.key()).dump() + ':';
    const json& element = *level.next;
    ++level.next;
    open(element);
  }

  std::vector<Level> levels_;
  std::string text_;
};

}  // namespace

const json* member(const json& value, const char* key) {
  if (!value.is_object()) return nullptr;
  const auto& members = value.get_ref<const json::object_t&>();
  const auto found = members.find(key);
  return found == members.end() ? nullptr : &found->second;
}

std::int32_t truncateToInt32(double number) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(number)) return 0;
  if (number <= Limits::min()) return Limits::min();
  if (number >= Limits::max()) return Limits::max();
  return static_cast<std::int32_t>(number);
}

std::int32_t toInt32(const json& value) {
  if (value.is_number_float()) return truncateToInt32(value.get<double>());
  return value.get<std::int32_t>();
}

std::string compactText(const json& value) {
  return CompactWriter().write(value);
}

}  // namespace tvrscn
