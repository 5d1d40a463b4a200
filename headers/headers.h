// The header block of a message or part as an ordered, editable collection; duplicates are allowed. What was read from
// a file is kept as one block of bytes, and a header is an object only while a client holds it, or once its name or
// value was put; then that object is the header. Edits by a client (Add, Remove, RemoveAll, and the puts of CHeader)
// tell the owning control; reading tells nobody.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "headers/header_text.h"
#include "headers/place_table.h"
#include "mailbox/item_iterator.h"
#include "mailbox/owner.h"
#include "mailbox/snapshot.h"

namespace vellobar {

class CHeader;

namespace headers {
class MadeHeaders;
}
namespace platform {
class ByteSink;
}

class CHeaders : public std::enable_shared_from_this<CHeaders> {
 public:
  CHeaders();
  explicit CHeaders(OwnerLink owner);
  ~CHeaders();
  CHeaders(const CHeaders&) = delete;
  CHeaders& operator=(const CHeaders&) = delete;

  std::int64_t Count() const { return static_cast<std::int64_t>(places_.size() + unlisted_); }

  /// The header at a position counted from 0, or the first one of a name, compared without regard to case.
  /// Status::invalid_argument when there is none.
  std::shared_ptr<CHeader> Item(std::int64_t position);
  std::shared_ptr<CHeader> Item(std::u16string_view name);
  bool Exists(std::int64_t position) const;
  bool Exists(std::u16string_view name) const;

  /// All headers, each ended by CR LF; no empty line behind them.
  std::u16string ToString() const;

  /// Appends a header; never merges. One notification, whatever is stored.
  std::shared_ptr<CHeader> Add(std::u16string_view name, std::u16string_view value = {});

  /// Removes one header: at a position, the first of a name, or that very object. Status::invalid_argument when it is
  /// not there.
  void Remove(std::int64_t position);
  void Remove(std::u16string_view name);
  void Remove(const CHeader& header);
  void RemoveAll();

  /// Appends the header lines of a text, up to its first empty line. Continuation lines are not joined. Tells nobody.
  void FromString(std::u16string_view headers_data);

  // For the component's own use; none of these tells the control.

  /// The headers that the collection has now, whatever becomes of it.
  std::shared_ptr<mailbox::Snapshot<CHeaders, CHeader>> snapshot() { return snapshots_.take(shared_from_this()); }
  /// The header at a position that is there.
  std::shared_ptr<CHeader> object_at(std::size_t position);

  /// Parses one line without its line end and appends it: the name is all before the first colon, the value all behind
  /// it less one leading space. A line without a colon is ignored.
  void add_line(std::string_view line);
  /// Lengthens the last header's value by CR LF and the line. That header must be a line that was just read.
  void continue_last(std::string_view line);
  /// The lines of a file's block come now, each cut at its first CR or LF.
  void start_reading() { is_reading_ = true; }
  /// All of them came; what is done from now on are changes.
  void finish_reading();
  /// True when somebody changed the headers, or may through an object that was made of one.
  bool is_changed() const { return is_changed_; }

  static constexpr std::size_t npos = static_cast<std::size_t>(-1);
  /// Position of the first header of this name at or behind `from`, without regard to case; npos when there is none.
  std::size_t find(std::u16string_view name, std::size_t from = 0) const;
  /// The same for a name of printable ASCII.
  std::size_t find(std::string_view ascii_name, std::size_t from = 0) const;

  /// The value at a position as bytes in the process code page.
  std::string narrow_value(std::size_t position) const;
  /// The name at a position, lower-cased, as bytes in the process code page.
  std::string narrow_lower_name(std::size_t position) const;
  /// The decoded value of the first header of this name, empty when there is none; valid until the next call. The
  /// last one is kept, so that reading the same value over and over decodes it once. The name is a literal: it is kept
  /// too.
  const std::u16string& decoded(std::string_view ascii_name);
  /// The same for the caller to keep. A long one is not kept here as well.
  std::u16string take_decoded(std::string_view ascii_name);
  std::u16string name(std::size_t position) const;
  std::u16string value(std::size_t position) const;

  void set_value(std::size_t position, std::u16string_view value);
  void erase(std::size_t position);
  void append(std::u16string_view name, std::u16string_view value);

  /// What ToString says, appended to a text.
  void append_text(std::u16string& to) const;
  /// How many bytes that is, at most, while none of the headers is an object.
  std::size_t most_bytes() const;

  /// What ToString says, as the bytes that are written to a file: lines of nearly the longest length keep within it.
  std::string to_bytes() const;
  /// Writes them, never held all at once.
  void write_to(platform::ByteSink& sink) const;

 private:
  /// A header: its line, or the object that it is instead.
  struct Entry {
    std::size_t place;
    std::shared_ptr<const CHeader> object;
  };

  /// The last value that was decoded, and what it depends on besides this collection.
  struct Decoded {
    std::string_view name;
    std::uint64_t edits = 0;
    int code_page = 0;
    bool is_kept = false;
    std::u16string text;
  };

  /// Up to the first empty line.
  void add_lines(std::string_view text);
  std::u16string decode(std::size_t position) const;
  void forget_decoded() {
    if (decoded_) decoded_->name = {};
  }
  std::size_t place_at(std::size_t position) const { return static_cast<std::size_t>(places_[position]); }
  Entry entry_at(std::size_t position) const;
  std::size_t find_changed(std::string_view ascii_name, std::size_t from) const;
  bool depends_on_thread(std::size_t position) const;
  template <typename Take, typename End>
  void for_each_line(Take take, End end) const;
  /// For whatever changes which headers there are.
  void before_change() { snapshots_.hold_items(); }
  void list_rest();
  void append_object(const std::shared_ptr<CHeader>& header);
  headers::MadeHeaders& made();
  std::size_t checked(std::int64_t position) const;
  std::size_t checked(std::u16string_view name) const;

  OwnerLink owner_;
  headers::HeaderText text_;
  headers::PlaceTable places_;                  ///< of each header, in `text_`
  std::unique_ptr<headers::MadeHeaders> made_;  ///< null until one was an object
  std::size_t unlisted_ = 0;  ///< lines of a long block being read, whose places are listed when all came
  bool is_reading_ = false;
  bool is_changed_ = false;
  mailbox::Snapshots<CHeaders, CHeader> snapshots_;
  std::unique_ptr<Decoded> decoded_;  ///< null until something was decoded
};

/// `for (const auto& header : message->Headers())`: see ItemIterator.
inline ItemIterator<CHeaders, CHeader> begin(std::shared_ptr<CHeaders> headers) {
  return ItemIterator<CHeaders, CHeader>(std::move(headers));
}
inline std::default_sentinel_t end(std::shared_ptr<CHeaders>) { return {}; }

}  // namespace vellobar
