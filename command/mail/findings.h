// What `vellobar check` can find in a mailbox: a name that programs know it by, what it means, and what to do.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vellobar::command {

enum class FindingKind {
  no_line_feeds,
  text_before_first_message,
  doubtful_separator_line,
  long_header_line,
  headers_begin_with_blank,
  headers_without_end,
  boundary_without_parts,
  short_boundary,
  missing_closing_delimiter,
  long_line,
};

struct FindingTexts {
  const char* name;
  const char* meaning;
  const char* advice;
};

const FindingTexts& texts_of(FindingKind kind);

struct Finding {
  FindingKind kind;
  std::int64_t message = 0;
  std::int64_t position = 0;  ///< of the byte in the file where it is, or where something has to go
  std::string detail;         ///< the line in question, or what to insert; bytes from the mail
};

using FindingSink = std::function<void(const Finding&)>;

}  // namespace vellobar::command
