// Bytes as people write them, and wide text as a terminal shows it: the notation of the tests.
#ifndef TVRSCN_TESTS_SUPPORT_BYTES_H
#define TVRSCN_TESTS_SUPPORT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tvrscn::test {

using Bytes = std::vector<std::uint8_t>;

// "1B A8 00*3" is 1B A8 00 00 00. Throws std::invalid_argument for anything else.
Bytes bytes(std::string_view hex);

// "1B A8 00 00 00".
std::string hex(std::span<const std::uint8_t> data);

// "0x1F48".
std::string hexNumber(std::uint64_t number);

// UTF-8 of wide text; what is no character becomes U+FFFD.
std::string utf8(std::wstring_view text);

// The path of a wide name, which reaches the file system as UTF-8 whatever the locale.
std::filesystem::path toPath(std::wstring_view name);

// Where expected and actual differ first, with both sides around it; empty when they are equal.
std::string describeMismatch(std::span<const std::uint8_t> expected,
                             std::span<const std::uint8_t> actual);

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_BYTES_H
