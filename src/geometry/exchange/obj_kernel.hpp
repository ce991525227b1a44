// Words and numbers of OBJ text on plain bytes: the split of an ASCII line into words
// as the host's str.split() makes it, and the numbers of plain decimal words exactly
// as the host's float() and int() read them. Anything else (underscores, inf and nan,
// numbers beyond the range of a double or of 18 digits) is left to the host.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace ostrel::kernel {

// The words of an ASCII line between runs of white space, which for the host's
// str.split() are space, \t, \n, \v, \f, \r and the separators \x1c to \x1f.
void split_words(std::string_view line, std::vector<std::string_view>& words);

// float(word) for a word of the form [sign] digits [. [digits]] [e [sign] digits], or
// with the digits only after the point: the correctly rounded double, as the host
// gives it. Nothing for any other word, or where the value overflows or underflows.
std::optional<double> decimal_float(std::string_view word);

// int(word) for a word of the form [sign] digits, of at most 18 digits.
std::optional<long long> decimal_int(std::string_view word);

// word.split("/")[0]
inline std::string_view before_slash(std::string_view word) { return word.substr(0, word.find('/')); }

}  // namespace ostrel::kernel
