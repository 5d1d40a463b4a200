#include "command/output/columns.h"

#include <algorithm>
#include <iterator>

namespace vellobar::command {

namespace {

struct Range {
  char32_t first, last;
};

// Unicode's combining marks (general category Mn, Me) and format characters of the scripts that mail is written in.
constexpr Range kWithoutWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},   {0x05BF, 0x05BF}, {0x05C1, 0x05C2}, {0x0610, 0x061A},
    {0x064B, 0x065F}, {0x0670, 0x0670}, {0x06D6, 0x06DC},   {0x0900, 0x0902}, {0x093C, 0x093C}, {0x0941, 0x0948},
    {0x094D, 0x094D}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},
    {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x2064},   {0x20D0, 0x20FF}, {0x3099, 0x309A}, {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0000, 0xE0FFF},
};

// East Asian width W and F (Unicode Standard Annex 11), in runs.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x23E9, 0x23EC},   {0x25FD, 0x25FE},   {0x2614, 0x2615},
    {0x2648, 0x2653},   {0x26A1, 0x26A1},   {0x26BD, 0x26BE},   {0x2705, 0x2705},   {0x270A, 0x270B},
    {0x2728, 0x2728},   {0x274C, 0x274C},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
    {0x2B50, 0x2B50},   {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F004, 0x1F004}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A},
    {0x1F200, 0x1F320}, {0x1F32D, 0x1F335}, {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393}, {0x1F3A0, 0x1F3CA},
    {0x1F3CF, 0x1F3D3}, {0x1F3E0, 0x1F3F0}, {0x1F3F4, 0x1F3F4}, {0x1F3F8, 0x1F43E}, {0x1F440, 0x1F440},
    {0x1F442, 0x1F4FC}, {0x1F4FF, 0x1F53D}, {0x1F54B, 0x1F567}, {0x1F57A, 0x1F57A}, {0x1F595, 0x1F596},
    {0x1F5A4, 0x1F5A4}, {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6CC, 0x1F6FC}, {0x1F7E0, 0x1F7EB},
    {0x1F90C, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD},
};

template <std::size_t size>
bool is_in(const Range (&ranges)[size], char32_t character) {
  const Range* found = std::lower_bound(std::begin(ranges), std::end(ranges), character,
                                        [](const Range& range, char32_t c) { return range.last < c; });
  return found != std::end(ranges) && found->first <= character;
}

std::size_t width_of(char32_t character) {
  if (character < 0x300) return 1;
  if (is_in(kWithoutWidth, character)) return 0;
  return is_in(kWide, character) ? 2 : 1;
}

/// The character that begins at `at`, which moves behind it. Half a surrogate pair is a character of its own.
char32_t next_character(std::u16string_view text, std::size_t& at) {
  const char32_t unit = text[at++];
  const bool is_pair = (unit & 0xFC00) == 0xD800 && at < text.size() && (text[at] & 0xFC00) == 0xDC00;
  return is_pair ? 0x10000 + ((unit & 0x3FF) << 10) + (text[at++] & 0x3FFu) : unit;
}

}  // namespace

std::size_t display_width(std::u16string_view text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) width += width_of(next_character(text, at));
  return width;
}

std::u16string cut_to(std::u16string_view text, std::size_t width) {
  std::size_t used = 0;
  std::size_t before_ellipsis = 0;
  for (std::size_t at = 0; at < text.size();) {
    used += width_of(next_character(text, at));
    if (used > width) return width == 0 ? u"" : std::u16string(text.substr(0, before_ellipsis)) + u"\u2026";
    if (used < width) before_ellipsis = at;
  }
  return std::u16string(text);
}

std::u16string fitted(std::u16string_view text, std::size_t width) {
  std::u16string cut = cut_to(text, width);
  return cut.append(width - std::min(width, display_width(cut)), u' ');
}

}  // namespace vellobar::command
