#include "headers/headers.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "errors/error.h"
#include "headers/header.h"
#include "headers/made_headers.h"
#include "mailbox/vellobar.h"
#include "mime/encoded_word.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/text_compare.h"

namespace vellobar {

namespace {

std::u16string widen(std::string_view bytes) { return platform::widen(platform::kThreadCodePage, bytes); }

/// A wanted name, folded once. Printable ASCII, which is nearly every name there is, is compared as it stands; anything
/// else goes through the platform's case folding and comparison.
class WantedName {
 public:
  explicit WantedName(std::u16string_view name)
      : ascii_(platform::is_printable_ascii(name)), folded_(platform::fold_case(name)) {}

  bool matches(std::string_view name) const {
    if (ascii_ && platform::is_printable_ascii(name)) return equal_without_case(name);
    return platform::equal_in_user_locale(platform::fold_case(widen(name)), folded_);
  }

  bool matches(std::u16string_view name) const {
    if (ascii_ && platform::is_printable_ascii(name)) return equal_without_case(name);
    return platform::equal_in_user_locale(platform::fold_case(name), folded_);
  }

 private:
  template <typename Character>
  bool equal_without_case(std::basic_string_view<Character> name) const {
    return std::equal(name.begin(), name.end(), folded_.begin(), folded_.end(), [](Character c, char16_t wanted) {
      return static_cast<char16_t>(platform::lower_ascii(c)) == wanted;
    });
  }

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

/// A block of more headers than this has its places listed when their number is known, in one piece of memory that
/// need not grow.
constexpr std::size_t kListedAtOnce = 4096;

/// A text this long is not kept for the next call as well.
constexpr std::size_t kLong = std::size_t{1} << 18;

}  // namespace

CHeaders::CHeaders() = default;

CHeaders::CHeaders(OwnerLink owner) : owner_(std::move(owner)) {}

CHeaders::~CHeaders() = default;

CHeaders::Entry CHeaders::entry_at(std::size_t position) const {
  const std::size_t place = place_at(position);
  return {place, made_ ? made_->find(place) : nullptr};
}

headers::MadeHeaders& CHeaders::made() {
  if (!made_) made_ = std::make_unique<headers::MadeHeaders>();
  return *made_;
}

std::shared_ptr<CHeader> CHeaders::object_at(std::size_t position) {
  const std::size_t place = place_at(position);
  std::shared_ptr<CHeader> header = made().find(place);
  if (!header) {
    const headers::Line line = text_.line_at(place);
    header = std::make_shared<CHeader>(owner_, widen(line.name), widen(line.value));
    made().add(place, header);
  }
  is_changed_ = true;
  return header;
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
  if (text_.has_plain_names() && platform::is_printable_ascii(name)) return find(platform::narrow_ascii(name), from);
  const WantedName wanted(name);
  for (std::size_t position = from; position < places_.size(); ++position) {
    const Entry entry = entry_at(position);
    if (entry.object ? wanted.matches(entry.object->Name()) : wanted.matches(text_.name_at(entry.place))) {
      return position;
    }
  }
  return npos;
}

std::size_t CHeaders::find(std::string_view ascii_name, std::size_t from) const {
  if (!text_.has_plain_names()) return find(platform::widen_ascii(ascii_name), from);
  const std::size_t changed = find_changed(ascii_name, from);
  // The colon ends a name that was read.
  const bool is_in_text = ascii_name.find(':') == std::string_view::npos;
  const std::size_t end = is_in_text ? std::min(changed, places_.size()) : from;
  for (std::size_t position = from; position < end; ++position) {
    const std::size_t place = place_at(position);
    if (text_.has_name(place, ascii_name) && !(made_ && made_->is_changed(place))) return position;
  }
  return changed;
}

/// The first of the headers whose names may be other ones than those in the text.
std::size_t CHeaders::find_changed(std::string_view ascii_name, std::size_t from) const {
  if (!made_ || from >= places_.size()) return npos;
  const WantedName wanted(platform::widen_ascii(ascii_name));
  const std::optional<std::size_t> place =
      made_->find_changed(place_at(from), [&](const std::u16string& name) { return wanted.matches(name); });
  return place ? places_.position_of(*place) : npos;
}

std::shared_ptr<CHeader> CHeaders::Add(std::u16string_view name, std::u16string_view value) {
  append(name, value);
  std::shared_ptr<CHeader> added = object_at(places_.size() - 1);
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
  const std::optional<std::size_t> place = made_ ? made_->place_of(header) : std::nullopt;
  if (!place) throw Error(Status::invalid_argument);
  erase(places_.position_of(*place));
  mark_changed(owner_);
}

void CHeaders::RemoveAll() {
  before_change();
  places_.clear();
  made_.reset();
  text_.clear();
  is_changed_ = true;
  forget_decoded();
  mark_changed(owner_);
}

void CHeaders::FromString(std::u16string_view headers_data) {
  const std::string text = platform::narrow(platform::process_code_page(), headers_data) + "\r\n";
  const std::size_t count = places_.size();
  try {
    add_lines(text);
  } catch (...) {
    for (std::size_t added = count; made_ && added < places_.size(); ++added) made_->erase(place_at(added));
    places_.cut(count);
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
  before_change();
  if (headers::HeaderText::can_keep(line)) {
    const std::size_t place = text_.add(line, colon);
    if (is_reading_ && places_.size() == kListedAtOnce) {
      ++unlisted_;
    } else {
      places_.push_back(place);
    }
  } else {
    const headers::Line parts = headers::split(line, colon);
    append_object(std::make_shared<CHeader>(owner_, widen(parts.name), widen(parts.value)));
  }
  is_changed_ = true;
  forget_decoded();
}

void CHeaders::finish_reading() {
  text_.shrink_to_fit();
  list_rest();
  is_reading_ = false;
  is_changed_ = false;
}

void CHeaders::list_rest() {
  if (unlisted_ == 0) return;
  places_.reserve(places_.size() + unlisted_);
  std::size_t place = place_at(places_.size() - 1);
  for (; unlisted_ > 0; --unlisted_) places_.push_back(place = text_.place_behind(place));
}

void CHeaders::continue_last(std::string_view line) {
  text_.lengthen_last(line);
  is_changed_ = true;
  forget_decoded();
}

std::string CHeaders::narrow_value(std::size_t position) const {
  const Entry entry = entry_at(position);
  if (entry.object) return platform::narrow(platform::process_code_page(), entry.object->Value());
  return through_process_code_page(text_.value_at(entry.place));
}

std::string CHeaders::narrow_lower_name(std::size_t position) const {
  return platform::narrow(platform::process_code_page(), platform::fold_case(name(position)));
}

// Bytes beyond ASCII are seen through the code page of the thread that asks, which may be another one each time.
bool CHeaders::depends_on_thread(std::size_t position) const {
  const Entry entry = entry_at(position);
  return (!entry.object || !entry.object->is_kept()) && !platform::is_ascii(text_.value_at(entry.place));
}

/// A stored value is not copied for it: values can be long.
std::u16string CHeaders::decode(std::size_t position) const {
  const Entry entry = entry_at(position);
  if (!entry.object && platform::keeps_ascii(platform::process_code_page())) {
    const std::string_view value = text_.value_at(entry.place);
    if (platform::is_ascii(value)) return mime::decode_header_value(value);
  }
  return mime::decode_header_value(narrow_value(position));
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
  last.is_kept = !is_there || !depends_on_thread(position);
  return last.text;
}

std::u16string CHeaders::take_decoded(std::string_view ascii_name) {
  const std::u16string& text = decoded(ascii_name);
  if (text.size() < kLong) return text;
  forget_decoded();
  return std::exchange(decoded_->text, {});
}

std::u16string CHeaders::name(std::size_t position) const {
  const Entry entry = entry_at(position);
  return entry.object ? entry.object->Name() : widen(text_.name_at(entry.place));
}

std::u16string CHeaders::value(std::size_t position) const {
  const Entry entry = entry_at(position);
  return entry.object ? entry.object->Value() : widen(text_.value_at(entry.place));
}

void CHeaders::set_value(std::size_t position, std::u16string_view value) { object_at(position)->store_value(value); }

void CHeaders::erase(std::size_t position) {
  before_change();
  if (made_) made_->erase(place_at(position));
  places_.erase(position);
  is_changed_ = true;
  forget_decoded();
}

void CHeaders::append(std::u16string_view name, std::u16string_view value) {
  before_change();
  append_object(std::make_shared<CHeader>(owner_, std::u16string(name), std::u16string(value)));
  is_changed_ = true;
  forget_decoded();
}

// The place comes last: until it is there, nothing was added.
void CHeaders::append_object(const std::shared_ptr<CHeader>& header) {
  headers::MadeHeaders& objects = made();
  const std::size_t place = text_.add_gap();
  objects.add(place, header);
  places_.push_back(place);
  header->keep();
}

}  // namespace vellobar
