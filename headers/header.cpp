#include "headers/header.h"

#include <atomic>
#include <utility>

#include "platform/code_page.h"

namespace vellobar {

namespace {

std::atomic<std::uint64_t> edits_in_process{0};

}  // namespace

CHeader::CHeader(OwnerLink owner, std::u16string name, std::u16string value)
    : owner_(std::move(owner)), name_(std::move(name)), value_(std::move(value)) {}

void CHeader::SetName(std::u16string_view name) {
  name_ = name;
  note_edit();
  mark_changed(owner_);
}

void CHeader::SetValue(std::u16string_view value) {
  store_value(value);
  mark_changed(owner_);
}

void CHeader::store_value(std::u16string_view value) {
  value_ = value;
  note_edit();
}

std::u16string CHeader::ToString() const {
  return platform::widen(platform::kThreadCodePage,
                         platform::narrow(platform::process_code_page(), name_ + u": " + value_));
}

bool CHeader::parse_line(std::u16string_view line) {
  const std::string text = platform::narrow(platform::process_code_page(), line);
  const std::size_t colon = text.find(": ");
  if (colon == std::string::npos) return false;
  std::u16string name = platform::widen(platform::kThreadCodePage, std::string_view(text).substr(0, colon));
  value_ = platform::widen(platform::kThreadCodePage, std::string_view(text).substr(colon + 2));
  name_ = std::move(name);
  note_edit();
  return true;
}

void CHeader::leave() noexcept {
  has_line_ = false;
  kept_.reset();
}

void CHeader::note_edit() {
  if (has_line_) keep();
  edits_in_process.fetch_add(1, std::memory_order_relaxed);
}

std::uint64_t CHeader::edits() noexcept { return edits_in_process.load(std::memory_order_relaxed); }

}  // namespace vellobar
