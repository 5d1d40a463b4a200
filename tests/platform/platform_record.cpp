#include "platform_record.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "platform/clock.h"
#include "platform/code_page.h"

namespace vellobar::platform {

namespace {

/// FNV-1a over numbers, each as eight bytes.
class Checksum {
 public:
  void add(std::uint64_t number) {
    for (int shift = 0; shift < 64; shift += 8) value_ = (value_ ^ (number >> shift & 0xFF)) * 0x100000001B3u;
  }
  void add_text(std::string_view bytes) {
    add(bytes.size());
    for (char c : bytes) add(static_cast<unsigned char>(c));
  }
  void add_text(std::u16string_view text) {
    add(text.size());
    for (char16_t unit : text) add(unit);
  }
  std::string text() const {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(value_));
    return digits;
  }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

std::string hex(unsigned value, int width) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%0*X", width, value);
  return digits;
}

std::string bytes_of(unsigned first, unsigned second) { return {static_cast<char>(first), static_cast<char>(second)}; }

/// A byte takes a second one when both together read as one unit.
bool is_lead(int page, unsigned byte) { return widen(page, bytes_of(byte, 0xA1)).size() == 1; }

/// What a unit is written as, "?" in place of a best fit.
std::string exact_bytes(int page, char16_t unit) {
  const std::u16string_view text(&unit, 1);
  std::string bytes = narrow(page, text);
  return widen(page, bytes) == text ? bytes : "?";
}

/// Calls `use` with every sequence of `length` elements of `alphabet` that begins with `prefix`.
template <typename Char, typename Use>
void for_each_sequence(std::basic_string<Char> prefix, std::span<const Char> alphabet, std::size_t length, Use use) {
  std::vector<std::size_t> digits(length - prefix.size());
  std::basic_string<Char> text = prefix + std::basic_string<Char>(digits.size(), alphabet[0]);
  for (;;) {
    use(text);
    std::size_t at = digits.size();
    while (at > 0 && ++digits[at - 1] == alphabet.size()) {
      digits[at - 1] = 0;
      text[prefix.size() + at - 1] = alphabet[0];
      --at;
    }
    if (at == 0) return;
    text[prefix.size() + at - 1] = alphabet[digits[at - 1]];
  }
}

/// One line for each first element: a checksum over all sequences of up to `longest` elements.
template <typename Char, typename Convert>
void record_sequences(std::vector<std::string>& lines, const std::string& title, std::span<const Char> alphabet,
                      std::size_t longest, Convert convert) {
  for (const Char first : alphabet) {
    Checksum sum;
    for (std::size_t length = 1; length <= longest; ++length) {
      for_each_sequence<Char>({first}, alphabet, length, [&](const auto& text) { sum.add_text(convert(text)); });
    }
    const auto number = static_cast<std::make_unsigned_t<Char>>(first);
    lines.push_back(title + " " + hex(static_cast<unsigned>(number), 2) + " " + sum.text());
  }
}

/// True where Wine takes two bytes for one malformed character of which the second cannot follow the first: overlong
/// forms, surrogates, numbers above U+10FFFF. The test of malformed UTF-8 lists what becomes of them.
bool second_byte_out_of_range(const std::string& bytes) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
    const unsigned next = at(i + 1);
    if (next < 0x80 || next > 0xBF) continue;
    if ((at(i) == 0xE0 && next < 0xA0) || (at(i) == 0xED && next >= 0xA0)) return true;
    if ((at(i) == 0xF0 && next < 0x90) || (at(i) == 0xF4 && next >= 0x90)) return true;
  }
  return false;
}

/// UTF-8 with text behind it, because Wine drops what follows a sequence that the end of the text cuts short.
std::u16string widen_utf8(const std::string& bytes) {
  return second_byte_out_of_range(bytes) ? std::u16string() : widen(kUtf8CodePage, bytes + "end");
}

std::uint64_t packed(const BrokenDownTime& time) {
  std::uint64_t all = 0;
  for (int field : {time.year, time.month, time.day_of_week, time.day, time.hour, time.minute, time.second}) {
    all = all * 11'000 + static_cast<std::uint64_t>(field);
  }
  return all * 1'000 + static_cast<std::uint64_t>(time.milliseconds);
}

/// Doubles are told apart to their last bit.
std::uint64_t bits_of(double number) {
  std::uint64_t bits = 0;
  static_assert(sizeof bits == sizeof number);
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

constexpr std::uint64_t kRefused = 0xFFFFFFFFFFFFFFFFu;

void add_ticks_of(Checksum& sum, const BrokenDownTime& time) {
  std::int64_t ticks = 0;
  sum.add(to_ticks(time, ticks) ? static_cast<std::uint64_t>(ticks) : kRefused);
}

void add_date_of(Checksum& sum, const BrokenDownTime& time) {
  double date = 0;
  sum.add(to_automation_date(time, date) ? bits_of(date) : kRefused);
}

void add_time_of_date(Checksum& sum, double date) {
  BrokenDownTime time;
  sum.add(from_automation_date(date, time) ? packed(time) : kRefused);
}

void add_time_of_ticks(Checksum& sum, std::int64_t ticks) {
  BrokenDownTime time;
  sum.add(from_ticks(ticks, time) ? packed(time) : kRefused);
}

/// Calls `use` with days of a century, those that do not exist and both ends included, at changing times of day.
template <typename Use>
void for_each_day(int first_year, Use use) {
  int turn = 0;
  for (int year = first_year; year < first_year + 100; ++year) {
    for (int month = 0; month <= 13; ++month) {
      for (int day : {-1, 0, 1, 2, 15, 27, 28, 29, 30, 31, 32}) {
        // Wine lets 31 November roll over into January; there is no other day on which systems differ.
        if (month == 11 && day == 31) continue;
        ++turn;
        use(BrokenDownTime{.year = year,
                           .month = month,
                           .day = day,
                           .hour = turn * 7 % 24,
                           .minute = turn * 11 % 60,
                           .second = turn * 13 % 60,
                           .milliseconds = turn * 17 % 1000});
      }
    }
  }
}

std::string century_line(const char* title, int first_year, const Checksum& sum) {
  return std::string(title) + " " + std::to_string(first_year) + " " + sum.text();
}

void record_centuries(std::vector<std::string>& lines) {
  for (int first_year = 0; first_year <= 10'000; first_year += 100) {
    Checksum ticks, dates;
    for_each_day(first_year, [&](const BrokenDownTime& time) {
      add_ticks_of(ticks, time);
      add_date_of(dates, time);
    });
    lines.push_back(century_line("to-ticks", first_year, ticks));
    lines.push_back(century_line("to-date", first_year, dates));
  }
}

void record_times_of_day(std::vector<std::string>& lines) {
  Checksum ticks, dates;
  for (int hour : {-1, 0, 1, 12, 23, 24, 25, 240}) {
    for (int minute : {-1, 0, 1, 59, 60, 61, 1440}) {
      for (int second : {-1, 0, 1, 59, 60, 61, 3600}) {
        for (int milliseconds : {-1, 0, 1, 499, 500, 999, 1000}) {
          for (int year : {1899, 2024, 9999}) {
            const BrokenDownTime time = {.year = year,
                                         .month = 6,
                                         .day = 15,
                                         .hour = hour,
                                         .minute = minute,
                                         .second = second,
                                         .milliseconds = milliseconds};
            add_ticks_of(ticks, time);
            add_date_of(dates, time);
          }
        }
      }
    }
  }
  lines.push_back("to-ticks times " + ticks.text());
  lines.push_back("to-date times " + dates.text());
}

void record_automation_dates(std::vector<std::string>& lines) {
  // A prime number of seconds, so that every time of day turns up; half a second more tells rounding.
  for (int first = -660'000; first < 2'970'000; first += 30'000) {
    Checksum sum;
    for (int day = first; day < first + 30'000; day += 7) {
      const double fraction = static_cast<double>((day + 700'000) * 7919LL % 86'400) / 86'400.0;
      const double sign = day < 0 ? -1.0 : 1.0;
      for (double slice : {0.0, 0.3, 0.49, 0.5, 0.51, 0.999}) {
        add_time_of_date(sum, day + sign * (fraction + slice / 86'400.0));
      }
    }
    lines.push_back("from-date " + std::to_string(first) + " " + sum.text());
  }
}

void record_ticks(std::vector<std::string>& lines) {
  constexpr std::int64_t kStep = 26'504'677'440'007'919;  // about a hundredth of the way to the year 10000
  for (int part = 0; part <= 100; ++part) {
    Checksum sum;
    for (int i = 0; i < 500; ++i) add_time_of_ticks(sum, part * kStep + i * (kStep / 500 + 12'345));
    lines.push_back("from-ticks " + std::to_string(part) + " " + sum.text());
  }
}

}  // namespace

const std::vector<int>& recorded_pages() {
  static const std::vector<int> pages = {437,   720,   737,   775,   850,   852,   855,   857,   858,   862,   866,
                                         874,   932,   936,   949,   950,   1125,  1250,  1251,  1252,  1253,  1254,
                                         1255,  1256,  1257,  1258,  20127, 20866, 20932, 21866, 28591, 28592, 28593,
                                         28594, 28595, 28596, 28597, 28598, 28599, 28603, 28605};
  return pages;
}

std::vector<std::string> record_of_page(int page) {
  const std::string title = std::to_string(page);
  if (widen(page, "a").empty()) return {title + " is not there"};
  std::vector<std::string> lines;
  for (unsigned row = 0x80; row < 0x100; row += 16) {
    std::string line = title + " " + hex(row, 2);
    for (unsigned byte = row; byte < row + 16; ++byte) {
      for (char16_t unit : widen(page, std::string(1, static_cast<char>(byte)))) line += " " + hex(unit, 4);
    }
    lines.push_back(line);
  }
  for (unsigned lead = 0x80; lead < 0x100; ++lead) {
    if (!is_lead(page, lead)) continue;
    Checksum sum;
    for (unsigned trail = 0; trail < 0x100; ++trail) sum.add_text(widen(page, bytes_of(lead, trail)));
    lines.push_back(title + " lead " + hex(lead, 2) + " " + sum.text());
  }
  for (unsigned block = 0; block < 0x10000; block += 0x100) {
    Checksum sum;
    bool any = false;
    for (unsigned unit = block; unit < block + 0x100; ++unit) {
      const std::string bytes = exact_bytes(page, static_cast<char16_t>(unit));
      any = any || bytes != "?";
      sum.add_text(bytes);
    }
    if (any) lines.push_back(title + " units " + hex(block, 4) + " " + sum.text());
  }
  return lines;
}

std::vector<std::string> record_of_unicode_transformations() {
  using namespace std::string_literals;
  static const std::string utf8_bytes =
      "\x00\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3\xF4\xF5\xF8\xFC\xFE\xFF"s;
  static const std::string utf7_bytes = "\0\t !&'(+,-/09=@A\\az~\x7F\x80\xE9\xFF"s;
  static const std::u16string units =
      u"\0\t\n !&'+,-/=@A\\z~\x7F\x80\xE9\x7FF\x800\xD7FF\xD800\xDBFF\xDC00\xDFFF\xE000\xFFFD\xFFFF"s;
  const auto widen_utf7 = [](const std::string& bytes) { return widen(kUtf7CodePage, bytes); };
  const auto narrow_to = [](int page) { return [page](const std::u16string& text) { return narrow(page, text); }; };
  std::vector<std::string> lines;
  record_sequences<char>(lines, "utf-8 from", utf8_bytes, 4, widen_utf8);
  record_sequences<char16_t>(lines, "utf-8 to", units, 3, narrow_to(kUtf8CodePage));
  record_sequences<char>(lines, "utf-7 from", utf7_bytes, 4, widen_utf7);
  record_sequences<char16_t>(lines, "utf-7 to", units, 4, narrow_to(kUtf7CodePage));
  return lines;
}

std::vector<std::string> record_of_dates() {
  std::vector<std::string> lines;
  record_centuries(lines);
  record_times_of_day(lines);
  record_automation_dates(lines);
  record_ticks(lines);
  return lines;
}

std::vector<std::string> platform_record() {
  std::vector<std::string> lines;
  const auto add = [&](const std::vector<std::string>& more) { lines.insert(lines.end(), more.begin(), more.end()); };
  for (int page : recorded_pages()) add(record_of_page(page));
  add(record_of_unicode_transformations());
  add(record_of_dates());
  return lines;
}

}  // namespace vellobar::platform
