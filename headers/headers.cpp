#include "headers/headers.h"

#include <algorithm>
#include <utility>

#include "errors/error.h"
#include "headers/header.h"
#include "mailbox/vellobar.h"
#include "mime/encoded_word.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/text_compare.h"

namespace vellobar {

namespace {

std::u16string widen(std::string_view bytes) { return platform::widen(platform::kThreadCodePage, bytes); }

template <typename Character>
bool equal_without_case(std::basic_string_view<Character> name, std::u16string_view lower_wanted) {
  return std::equal(
      name.begin(), name.end(), lower_wanted.begin(), lower_wanted.end(),
      [](Character c, char16_t wanted) { return static_cast<char16_t>(platform::lower_ascii(c)) == wanted; });
}

/// A wanted name, folded once. Printable ASCII, which is nearly every name there is, is compared as it stands; anything
/// else goes through the platform's case folding and comparison.
class WantedName {
 public:
  explicit WantedName(std::u16string_view name)
      : ascii_(platform::is_printable_ascii(name)), folded_(platform::fold_case(name)) {}

  /// For a name of printable ASCII.
  explicit WantedName(std::string_view name) : ascii_(true), folded_(name.size(), u'\0') {
    std::transform(name.begin(), name.end(), folded_.begin(), platform::lower_ascii<char>);
  }

  bool matches(std::string_view name) const {
    if (ascii_ && platform::is_printable_ascii(name)) return equal_without_case(name, folded_);
    return platform::equal_in_user_locale(platform::fold_case(widen(name)), folded_);
  }

  bool matches(std::u16string_view name) const {
    if (ascii_ && platform::is_printable_ascii(name)) return equal_without_case(name, folded_);
    return platform::equal_in_user_locale(platform::fold_case(name), folded_);
  }

 private:
  bool ascii_;
  std::u16string folded_;
};

/// Bytes as they stand in a file, as they would look after being widened with the thread's code page and narrowed with
/// the process code page.
std::string through_process_code_page(std::string_view bytes) {
  const int code_page = platform::process_code_page();
  if (platform::is_ascii(bytes) && platform::keeps_ascii(code_page)) return std::string(bytes);
  return platform::narrow(code_page, widen(bytes));
}

/// A block this long grows by a quarter, not by itself again.
constexpr std::size_t kLong = std::size_t{1} << 18;

template <typename Sequence>
void make_room(Sequence& sequence, std::size_t more) {
  const std::size_t needed = sequence.size() + more;
  if (needed > kLong && needed > sequence.capacity()) sequence.reserve(needed + needed / 4);
}

template <typename Sequence>
void give_back_room(Sequence& sequence) {
  if (sequence.capacity() - sequence.size() > kLong / 4) sequence.shrink_to_fit();
}

}  // namespace

CHeaders::CHeaders() = default;

CHeaders::CHeaders(OwnerLink owner) : owner_(std::move(owner)) {}

CHeaders::~CHeaders() = default;

std::string_view CHeaders::stored_name(const Entry& entry) const {
  return std::string_view(text_).substr(entry.name_at, entry.name_size);
}

std::string_view CHeaders::stored_value(const Entry& entry) const {
  return std::string_view(text_).substr(entry.value_at, entry.value_size);
}

std::u16string CHeaders::name_of(const Entry& entry) const {
  return entry.object ? entry.object->Name() : widen(stored_name(entry));
}

std::u16string CHeaders::value_of(const Entry& entry) const {
  return entry.object ? entry.object->Value() : widen(stored_value(entry));
}

std::shared_ptr<CHeader> CHeaders::object_at(std::size_t position) {
  Entry& entry = items_[position];
  if (!entry.object) entry.object = std::make_shared<CHeader>(owner_, name_of(entry), value_of(entry));
  is_changed_ = true;
  return entry.object;
}

std::size_t CHeaders::checked(std::int64_t position) const {
  if (!Exists(position)) throw Error(Status::invalid_argument);
  return static_cast<std::size_t>(position);
}

std::size_t CHeaders::checked(std::u16string_view name) const {
  const std::size_t position = find(name);
  if (position == npos) throw Error(Status::invalid_argument);
  return position;
}

std::shared_ptr<CHeader> CHeaders::Item(std::int64_t position) { return object_at(checked(position)); }

std::shared_ptr<CHeader> CHeaders::Item(std::u16string_view name) { return object_at(checked(name)); }

bool CHeaders::Exists(std::int64_t position) const { return position >= 0 && position < Count(); }

bool CHeaders::Exists(std::u16string_view name) const { return find(name) != npos; }

std::size_t CHeaders::find(std::u16string_view name, std::size_t from) const {
  const WantedName wanted(name);
  return find_from(from, [&](const auto& held) { return wanted.matches(held); });
}

std::size_t CHeaders::find(std::string_view ascii_name, std::size_t from) const {
  const WantedName wanted(ascii_name);
  return find_from(from, [&](const auto& held) { return wanted.matches(held); });
}

template <typename Matches>
std::size_t CHeaders::find_from(std::size_t from, Matches matches) const {
  const auto begin = items_.begin() + static_cast<std::ptrdiff_t>(std::min(from, items_.size()));
  const auto found = std::find_if(begin, items_.end(), [&](const Entry& entry) {
    return entry.object ? matches(std::u16string_view(entry.object->Name())) : matches(stored_name(entry));
  });
  return found == items_.end() ? npos : static_cast<std::size_t>(found - items_.begin());
}

std::size_t CHeaders::most_bytes() const { return text_.size() + items_.size() * 3; }

/// The pieces of each header in the process code page, line ends included.
template <typename Take>
void CHeaders::for_each_line(Take take) const {
  const int code_page = platform::process_code_page();
  const bool keeps_ascii = platform::keeps_ascii(code_page);
  for (const Entry& entry : items_) {
    const std::string_view name = stored_name(entry), value = stored_value(entry);
    // A header is converted as a whole, as CHeader::ToString does: some code pages carry state from name to value.
    if (entry.object) {
      take(platform::narrow(code_page, entry.object->Name() + u": " + entry.object->Value()));
    } else if (keeps_ascii && platform::is_ascii(name) && platform::is_ascii(value)) {
      take(name);
      take(": ");
      take(value);
    } else {
      take(platform::narrow(code_page, widen(std::string(name).append(": ").append(value))));
    }
    take(platform::kLineEnd);
  }
}

std::u16string CHeaders::ToString() const {
  std::u16string text;
  text.reserve(most_bytes());
  append_text(text);
  return text;
}

void CHeaders::append_text(std::u16string& to) const {
  for_each_line([&](std::string_view piece) { platform::append_widened(platform::kThreadCodePage, piece, to); });
}

std::string CHeaders::to_bytes() const {
  std::string bytes;
  bytes.reserve(most_bytes());
  for_each_line([&](std::string_view piece) {
    if (platform::is_ascii(piece)) {
      bytes += piece;
    } else {
      bytes += platform::narrow(platform::kThreadCodePage, widen(piece));
    }
  });
  return bytes;
}

std::shared_ptr<CHeader> CHeaders::Add(std::u16string_view name, std::u16string_view value) {
  append(name, value);
  std::shared_ptr<CHeader> added = object_at(items_.size() - 1);
  mark_changed(owner_);
  return added;
}

void CHeaders::Remove(std::int64_t position) {
  erase(checked(position));
  mark_changed(owner_);
}

void CHeaders::Remove(std::u16string_view name) {
  erase(checked(name));
  mark_changed(owner_);
}

void CHeaders::Remove(const CHeader& header) {
  const auto found =
      std::find_if(items_.begin(), items_.end(), [&](const Entry& entry) { return entry.object.get() == &header; });
  if (found == items_.end()) throw Error(Status::invalid_argument);
  erase(static_cast<std::size_t>(found - items_.begin()));
  mark_changed(owner_);
}

void CHeaders::RemoveAll() {
  items_.clear();
  text_.clear();
  is_changed_ = true;
  forget_decoded();
  mark_changed(owner_);
}

void CHeaders::FromString(std::u16string_view headers_data) {
  const std::string text = platform::narrow(platform::process_code_page(), headers_data) + "\r\n";
  const std::size_t count = items_.size();
  try {
    add_lines(text);
  } catch (...) {
    items_.resize(count);
    throw;
  }
}

void CHeaders::add_lines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) return;
    add_line(line);
    text.remove_prefix(end + 1);
  }
}

void CHeaders::add_line(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  std::size_t value = colon + 1;
  if (value < line.size() && line[value] == ' ') ++value;
  const std::size_t at = text_.size();
  make_room(text_, line.size());
  make_room(items_, 1);
  text_ += line;
  items_.push_back({at, colon, at + value, line.size() - value, nullptr});
  is_changed_ = true;
  forget_decoded();
}

void CHeaders::finish_reading() {
  give_back_room(text_);
  give_back_room(items_);
  is_changed_ = false;
}

void CHeaders::continue_last(std::string_view line) {
  Entry& last = items_.back();
  if (last.object) {
    last.object->continue_value(widen(line));
    return;
  }
  // The last header that was read ends where the text ends, so its value grows in place.
  make_room(text_, platform::kLineEnd.size() + line.size());
  text_ += platform::kLineEnd;
  text_ += line;
  is_changed_ = true;
  last.value_size += platform::kLineEnd.size() + line.size();
  forget_decoded();
}

std::string CHeaders::narrow_value(std::size_t position) const {
  const Entry& entry = items_[position];
  if (entry.object) return platform::narrow(platform::process_code_page(), entry.object->Value());
  return through_process_code_page(stored_value(entry));
}

std::string CHeaders::narrow_lower_name(std::size_t position) const {
  return platform::narrow(platform::process_code_page(), platform::fold_case(name_of(items_[position])));
}

// Bytes beyond ASCII are seen through the code page of the thread that asks, which may be another one each time.
bool CHeaders::depends_on_thread(const Entry& entry) const {
  return !entry.object && !platform::is_ascii(stored_value(entry));
}

/// A stored value is not copied for it: values can be long.
std::u16string CHeaders::decode(std::size_t position) const {
  const Entry& entry = items_[position];
  const bool is_plain =
      !entry.object && platform::is_ascii(stored_value(entry)) && platform::keeps_ascii(platform::process_code_page());
  return is_plain ? mime::decode_header_value(stored_value(entry)) : mime::decode_header_value(narrow_value(position));
}

const std::u16string& CHeaders::decoded(std::string_view ascii_name) {
  const std::uint64_t edits = CHeader::edits();
  const int code_page = platform::process_code_page();
  if (!decoded_) decoded_ = std::make_unique<Decoded>();
  Decoded& last = *decoded_;
  const bool is_last_one = last.name == ascii_name && last.edits == edits && last.code_page == code_page;
  if (is_last_one && last.is_kept) return last.text;

  const std::size_t position = find(ascii_name);
  const bool is_there = position != npos;
  last.text = is_there ? decode(position) : std::u16string();
  last.name = ascii_name;
  last.edits = edits;
  last.code_page = code_page;
  last.is_kept = !is_there || !depends_on_thread(items_[position]);
  return last.text;
}

std::u16string CHeaders::take_decoded(std::string_view ascii_name) {
  const std::u16string& text = decoded(ascii_name);
  if (text.size() < kLong) return text;
  forget_decoded();
  return std::exchange(decoded_->text, {});
}

std::u16string CHeaders::name(std::size_t position) const { return name_of(items_[position]); }

std::u16string CHeaders::value(std::size_t position) const { return value_of(items_[position]); }

void CHeaders::set_value(std::size_t position, std::u16string_view value) { object_at(position)->store_value(value); }

void CHeaders::erase(std::size_t position) {
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(position));
  is_changed_ = true;
  forget_decoded();
}

void CHeaders::append(std::u16string_view name, std::u16string_view value) {
  Entry entry;
  entry.object = std::make_shared<CHeader>(owner_, std::u16string(name), std::u16string(value));
  items_.push_back(std::move(entry));
  is_changed_ = true;
  forget_decoded();
}

}  // namespace vellobar
