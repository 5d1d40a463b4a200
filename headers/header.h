// One header of a message: a name and a value, kept exactly as parsed or as the client gave them. A folded value holds
// its continuation lines, each introduced by CR LF with its leading white space. Putting either tells the owning
// control. A header of a collection that was changed keeps itself alive, because only it knows its text then; any other
// ends with its last holder and is made again of its line.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "mailbox/owner.h"

namespace vellobar {

class CHeader : public std::enable_shared_from_this<CHeader> {
 public:
  CHeader() = default;
  CHeader(OwnerLink owner, std::u16string name, std::u16string value);

  const std::u16string& Name() const { return name_; }
  void SetName(std::u16string_view name);

  const std::u16string& Value() const { return value_; }
  void SetValue(std::u16string_view value);

  /// "Name: Value", passed through the process code page and back through the thread's, as it will be written. Nothing
  /// is folded.
  std::u16string ToString() const;

  /// Splits "Name: Value" at the first colon followed by a space. False, and nothing changed, when there is none. Tells
  /// nobody.
  bool parse_line(std::u16string_view line);

  /// Stores a value without telling the control.
  void store_value(std::u16string_view value);

  /// Says that a collection holds a line with this name and value.
  void join() { has_line_ = true; }
  /// Stays alive until it leaves: its name or value is not that of a line.
  void keep() { kept_ = shared_from_this(); }
  bool is_kept() const { return kept_ != nullptr; }
  /// Belongs to its holders alone from now on, one of whom must be the caller.
  void leave() noexcept;

  /// How many times a name or a value of any header in the process was changed: what was derived from headers is out of
  /// date when this has grown.
  static std::uint64_t edits() noexcept;

 private:
  void note_edit();

  OwnerLink owner_;
  std::u16string name_;
  std::u16string value_;
  bool has_line_ = false;
  std::shared_ptr<CHeader> kept_;  ///< itself
};

}  // namespace vellobar
