#include "platform/posix/code_page_tables.h"

#include <iconv.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/posix/code_page_data.h"

namespace vellobar::platform {

namespace {

constexpr unsigned kAsciiEnd = 0x80;
constexpr unsigned kC1End = 0xA0;
constexpr int kUsAscii = 20127;
constexpr int kEucJp = 20932;

/// One charset of the system's iconv, asked one character at a time.
class Charset {
 public:
  explicit Charset(const char* name) : descriptor_(::iconv_open("UTF-16LE", name)) {}
  ~Charset() {
    if (known()) ::iconv_close(descriptor_);
  }
  Charset(const Charset&) = delete;
  Charset& operator=(const Charset&) = delete;

  bool known() const noexcept { return descriptor_ != reinterpret_cast<iconv_t>(-1); }

  /// The one UTF-16 unit that the bytes stand for; 0 when they stand for none, or for several.
  char16_t unit_of(std::string_view bytes) {
    unsigned char out[8] = {};
    char* from = const_cast<char*>(bytes.data());
    char* to = reinterpret_cast<char*>(out);
    std::size_t left = bytes.size(), room = sizeof out;
    ::iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
    const bool converted = ::iconv(descriptor_, &from, &left, &to, &room) != kFailed && left == 0;
    // Charsets with combining marks hold a letter back until they are told that nothing follows.
    if (!converted || ::iconv(descriptor_, nullptr, nullptr, &to, &room) == kFailed || room != sizeof out - 2) return 0;
    return static_cast<char16_t>(out[0] | out[1] << 8);
  }

  char16_t unit_of(unsigned byte) {
    const char c = static_cast<char>(byte);
    return unit_of({&c, 1});
  }

 private:
  static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);
  iconv_t descriptor_;
};

/// The exception for a code, or null.
const PageException* exception_for(int number, unsigned code) noexcept {
  const auto rows = page_exceptions();
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.number == number && row.code == code; });
  return found == rows.end() ? nullptr : &*found;
}

/// Fills the bytes from 0x80 on that are no lead bytes; 0 from `charset_unit` is an unassigned byte.
template <typename UnitOf>
void fill_high_half(CodePageTables& tables, int number, char16_t first_private, UnitOf charset_unit) {
  for (unsigned byte = kAsciiEnd; byte < 256; ++byte) {
    if (tables.leads[byte]) continue;
    const PageException* exception = exception_for(number, byte);
    char16_t unit = exception != nullptr ? exception->unit : charset_unit(byte);
    if (unit == 0) unit = byte < kC1End ? static_cast<char16_t>(byte) : first_private++;
    tables.units[byte] = unit;
  }
}

void fill_ascii(CodePageTables& tables) {
  for (unsigned byte = 0; byte < kAsciiEnd; ++byte) tables.units[byte] = static_cast<char16_t>(byte);
}

/// What is written for each unit: of several codes the first, single bytes before pairs.
void enter_code(CodePageTables& tables, char16_t unit, unsigned code) {
  if (tables.codes[unit] == 0) tables.codes[unit] = static_cast<std::uint16_t>(code);
}

void enter_single_codes(CodePageTables& tables, unsigned end) {
  for (unsigned byte = 1; byte < end; ++byte) {
    if (!tables.leads[byte]) enter_code(tables, tables.units[byte], byte);
  }
}

/// US-ASCII drops the top bit of every byte and holds nothing else.
std::unique_ptr<CodePageTables> build_seven_bit() {
  auto tables = std::make_unique<CodePageTables>();
  tables->codes.resize(65536);
  for (unsigned byte = 0; byte < 256; ++byte) tables->units[byte] = static_cast<char16_t>(byte & 0x7F);
  enter_single_codes(*tables, kAsciiEnd);
  return tables;
}

std::unique_ptr<CodePageTables> build(const SingleBytePage& page) {
  if (page.number == kUsAscii) return build_seven_bit();
  auto tables = std::make_unique<CodePageTables>();
  tables->codes.resize(65536);
  fill_ascii(*tables);
  if (page.charset != nullptr) {
    Charset charset(page.charset);
    if (!charset.known()) return nullptr;
    fill_high_half(*tables, page.number, page.first_private, [&](unsigned byte) { return charset.unit_of(byte); });
  } else {
    fill_high_half(*tables, page.number, page.first_private, [&](unsigned byte) {
      const std::size_t at = byte - kAsciiEnd;
      return at < page.high_half.size() ? page.high_half[at] : static_cast<char16_t>(byte);
    });
  }
  enter_single_codes(*tables, 256);
  return tables;
}

/// The charset's own bytes for a pair of the page. Page 20932 writes the three bytes of JIS X 0212 as two, the second
/// without its top bit; pairs of other pages stand as they are.
std::string_view charset_bytes(int number, unsigned lead, unsigned trail, char (&room)[3]) {
  if (number == kEucJp && trail < kAsciiEnd) {
    if (lead < kC1End) return {};
    room[0] = static_cast<char>(0x8F);
    room[1] = static_cast<char>(lead);
    room[2] = static_cast<char>(trail | 0x80);
    return {room, 3};
  }
  room[0] = static_cast<char>(lead);
  room[1] = static_cast<char>(trail);
  return {room, 2};
}

/// Pairs that stay 0 are unassigned.
void fill_pairs(CodePageTables& tables, const TwoBytePage& page, Charset& charset) {
  tables.pairs.resize(65536);
  for (unsigned lead = kAsciiEnd; lead < 256; ++lead) {
    for (unsigned trail = 1; tables.leads[lead] && trail < 256; ++trail) {
      char room[3];
      const std::string_view bytes = charset_bytes(page.number, lead, trail, room);
      if (!bytes.empty()) tables.pairs[lead << 8 | trail] = charset.unit_of(bytes);
    }
  }
  for (const PageException& row : page_exceptions()) {
    if (row.number == page.number && row.code > 0xFF) tables.pairs[row.code] = row.unit;
  }
}

void fill_user_defined(CodePageTables& tables, const UserDefinedArea& area) {
  char16_t unit = area.first_unit;
  for (unsigned lead = area.leads.first; lead <= area.leads.last; ++lead) {
    for (const ByteRange& trails : area.trails) {
      for (unsigned trail = trails.first; trail <= trails.last; ++trail) tables.pairs[lead << 8 | trail] = unit++;
    }
  }
}

void enter_pair_codes(CodePageTables& tables, const TwoBytePage& page, bool read_only) {
  for (unsigned code = kAsciiEnd << 8; code < 65536; ++code) {
    const bool assigned = tables.pairs[code] != 0;
    if (assigned && page.read_only_leads.holds(code >> 8) == read_only) enter_code(tables, tables.pairs[code], code);
  }
}

std::unique_ptr<CodePageTables> build(const TwoBytePage& page) {
  Charset charset(page.charset);
  if (!charset.known()) return nullptr;
  auto tables = std::make_unique<CodePageTables>();
  tables->codes.resize(65536);
  tables->units.fill(page.unassigned);
  for (unsigned byte = 0; byte < 256; ++byte) {
    tables->leads[byte] = page.leads[0].holds(byte) || page.leads[1].holds(byte);
  }
  fill_ascii(*tables);
  fill_high_half(*tables, page.number, page.first_private, [&](unsigned byte) { return charset.unit_of(byte); });
  fill_pairs(*tables, page, charset);
  for (const UserDefinedArea& area : user_defined_areas()) {
    if (area.number == page.number) fill_user_defined(*tables, area);
  }
  // The single bytes above ASCII of page 20932 are read, never written.
  enter_single_codes(*tables, page.number == kEucJp ? kAsciiEnd : 256);
  for (const PreferredCode& row : preferred_codes()) {
    if (row.number == page.number) enter_code(*tables, tables->pairs[row.code], row.code);
  }
  enter_pair_codes(*tables, page, false);
  enter_pair_codes(*tables, page, true);
  std::replace(tables->pairs.begin(), tables->pairs.end(), u'\0', page.unassigned);
  return tables;
}

struct Slot {
  std::once_flag built;
  std::unique_ptr<const CodePageTables> tables;
};

template <typename Page>
const CodePageTables* tables_of(const Page& page, Slot& slot) {
  std::call_once(slot.built, [&] { slot.tables = build(page); });
  return slot.tables.get();
}

}  // namespace

const CodePageTables* code_page_tables(int number) {
  static std::vector<Slot> single_slots(single_byte_pages().size()), two_slots(two_byte_pages().size());
  const auto is_it = [number](const auto& page) { return page.number == number; };
  const auto singles = single_byte_pages();
  if (const auto page = std::find_if(singles.begin(), singles.end(), is_it); page != singles.end()) {
    return tables_of(*page, single_slots[static_cast<std::size_t>(page - singles.begin())]);
  }
  const auto twos = two_byte_pages();
  if (const auto page = std::find_if(twos.begin(), twos.end(), is_it); page != twos.end()) {
    return tables_of(*page, two_slots[static_cast<std::size_t>(page - twos.begin())]);
  }
  return nullptr;
}

}  // namespace vellobar::platform
