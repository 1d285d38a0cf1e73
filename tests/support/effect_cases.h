// What the brightness and contrast effect makes of a page, on every system. The levels are worked
// out from the formula by hand.
#ifndef TVRSCN_TESTS_SUPPORT_EFFECT_CASES_H
#define TVRSCN_TESTS_SUPPORT_EFFECT_CASES_H

#include <cstdint>
#include <vector>

namespace tvrscn::test {

struct LevelCase {
  const char* name;
  int brightness, contrast;
  std::vector<std::uint8_t> levels;  // of 0, 60, 127, 128, 200 and 255
};

// contrast -50: 127.5 + (v - 127.5) / 2; 50: 127.5 + (v - 127.5) * 2
inline const LevelCase kLevelCases[] = {
    {"none", 0, 0, {0, 60, 127, 128, 200, 255}},
    {"brighter", 50, 0, {50, 110, 177, 178, 250, 255}},
    {"darker", -50, 0, {0, 10, 77, 78, 150, 205}},
    {"all white", 255, 0, {255, 255, 255, 255, 255, 255}},
    {"all black", -255, 0, {0, 0, 0, 0, 0, 0}},
    {"half contrast", 0, -50, {64, 94, 127, 128, 164, 191}},
    {"flat grey", 0, -100, {128, 128, 128, 128, 128, 128}},
    {"double contrast", 0, 50, {0, 0, 127, 129, 255, 255}},
    {"hard", 0, 100, {0, 0, 0, 255, 255, 255}},
    {"contrast first", 20, 50, {20, 20, 147, 149, 255, 255}},
    {"white whatever", 255, 100, {255, 255, 255, 255, 255, 255}},
    {"black whatever", -255, -100, {0, 0, 0, 0, 0, 0}},
};

struct BitLevelCase {
  const char* name;
  int brightness, contrast;
  std::uint8_t result;  // of 0xA5
};

inline constexpr BitLevelCase kBitLevelCases[] = {
    {"none", 0, 0, 0xA5},
    {"not enough", 127, 0, 0xA5},
    {"black goes white", 128, 0, 0xFF},
    {"white goes black", -128, 0, 0x00},
    {"flat grey", 0, -100, 0xFF},
    {"hard", 0, 100, 0xA5},
};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_EFFECT_CASES_H
