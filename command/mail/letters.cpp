#include "command/mail/letters.h"

#include <algorithm>

namespace vellobar::command {

namespace {

/// Capital letters that stand a fixed distance before their small ones, or (every other one of them) right before.
struct Capitals {
  char16_t first, last;
  char16_t distance;
  bool alternate = false;
};

constexpr Capitals kCapitals[] = {
    {u'A', u'Z', 32},          {0x00C0, 0x00D6, 32},      {0x00D8, 0x00DE, 32},      {0x0100, 0x012F, 1, true},
    {0x0132, 0x0137, 1, true}, {0x0139, 0x0148, 1, true}, {0x014A, 0x0177, 1, true}, {0x0179, 0x017E, 1, true},
    {0x0388, 0x038A, 37},      {0x0391, 0x03AB, 32},      {0x0400, 0x040F, 80},      {0x0410, 0x042F, 32},
    {0x0460, 0x0481, 1, true}, {0x048A, 0x04BF, 1, true}, {0x1E00, 0x1E95, 1, true}, {0x1EA0, 0x1EFF, 1, true},
};

char16_t lower(char16_t letter) {
  for (const Capitals& capitals : kCapitals) {
    if (letter < capitals.first || letter > capitals.last) continue;
    const bool is_capital = !capitals.alternate || (letter - capitals.first) % 2 == 0;
    return static_cast<char16_t>(letter + (is_capital ? capitals.distance : 0));
  }
  return letter;
}

}  // namespace

std::u16string lower_letters(std::u16string_view text) {
  std::u16string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
  return lowered;
}

bool contains_ignoring_case(std::u16string_view text, std::u16string_view wanted) {
  return lower_letters(text).find(wanted) != std::u16string::npos;
}

}  // namespace vellobar::command
