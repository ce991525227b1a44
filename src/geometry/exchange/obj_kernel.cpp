#include "exchange/obj_kernel.hpp"

#include <array>
#include <charconv>
#include <cstdint>

namespace ostrel::kernel {

namespace {

// The white space of str.split() among the ASCII characters, as a table: the split is
// the inner loop of reading a file.
constexpr std::array<bool, 256> space_table = [] {
  std::array<bool, 256> table{};
  for (const unsigned char c : {' ', '\t', '\n', '\v', '\f', '\r', '\x1c', '\x1d', '\x1e', '\x1f'}) table[c] = true;
  return table;
}();

bool is_space(char c) { return space_table[static_cast<unsigned char>(c)]; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

void split_words(std::string_view line, std::vector<std::string_view>& words) {
  words.clear();
  std::size_t i = 0;
  while (true) {
    while (i < line.size() && is_space(line[i])) ++i;
    if (i == line.size()) return;
    const std::size_t start = i;
    while (i < line.size() && !is_space(line[i])) ++i;
    words.push_back(line.substr(start, i - start));
  }
}

std::optional<double> decimal_float(std::string_view word) {
  std::size_t i = 0;
  const bool negative = !word.empty() && word[0] == '-';
  if (!word.empty() && (word[0] == '+' || word[0] == '-')) ++i;
  const std::size_t mantissa = i;
  // The digits as one integer and the power of ten it is to be scaled by, while they
  // fit; `exact` stays set while both are small enough for the one-rounding path.
  std::uint64_t significand = 0;
  int scale = 0, count = 0;
  auto take = [&](bool after_point) {
    const std::size_t start = i;
    for (; i < word.size() && is_digit(word[i]); ++i) {
      if (count < 19) {
        significand = significand * 10 + static_cast<unsigned>(word[i] - '0');
        if (significand != 0) ++count;
        if (after_point) --scale;
      } else if (!after_point) {
        ++scale;
      }
    }
    return i - start;
  };
  std::size_t n = take(false);
  if (i < word.size() && word[i] == '.') {
    ++i;
    n += take(true);
  }
  if (n == 0) return std::nullopt;
  bool exact = count <= 15;
  if (i < word.size() && (word[i] == 'e' || word[i] == 'E')) {
    ++i;
    const bool negative_exponent = i < word.size() && word[i] == '-';
    if (i < word.size() && (word[i] == '+' || word[i] == '-')) ++i;
    const std::size_t start = i;
    int exponent = 0;
    for (; i < word.size() && is_digit(word[i]); ++i)
      if (exponent < 10000) exponent = exponent * 10 + (word[i] - '0');
    if (i == start) return std::nullopt;
    scale += negative_exponent ? -exponent : exponent;
  }
  if (i != word.size()) return std::nullopt;
  if (exact && scale >= -22 && scale <= 22) {
    // An integer below 2^53 and a power of ten that doubles hold exactly: one division
    // or multiplication, correctly rounded, as the host's conversion gives it.
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const double m = static_cast<double>(significand);
    const double value = scale < 0 ? m / powers[-scale] : m * powers[scale];
    return negative ? -value : value;
  }
  // from_chars takes no '+'; the sign is put back after, which is exact.
  double value = 0.0;
  const auto [end, error] = std::from_chars(word.data() + mantissa, word.data() + word.size(), value);
  if (error != std::errc() || end != word.data() + word.size()) return std::nullopt;
  return negative ? -value : value;
}

std::optional<long long> decimal_int(std::string_view word) {
  std::size_t i = 0;
  const bool negative = !word.empty() && word[0] == '-';
  if (!word.empty() && (word[0] == '+' || word[0] == '-')) ++i;
  const std::size_t start = i;
  long long value = 0;
  for (; i < word.size() && is_digit(word[i]); ++i) {
    if (i - start == 18) return std::nullopt;  // more digits than a long long surely holds
    value = value * 10 + (word[i] - '0');
  }
  if (i == start || i != word.size()) return std::nullopt;
  return negative ? -value : value;
}

}  // namespace ostrel::kernel
