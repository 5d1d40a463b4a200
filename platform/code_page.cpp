#include "platform/code_page.h"

#include <atomic>

#include "platform/ascii.h"

namespace vellobar::platform {

namespace {

std::atomic<int> chosen_code_page = kAnsiCodePage;

constexpr std::size_t kPiece = 64 * 1024;

/// The first bytes, so many that what follows can be converted alone: ASCII bytes, or whole lines.
std::string_view first_piece(std::string_view bytes) {
  const std::string_view front = bytes.substr(0, kPiece);
  if (front.size() == bytes.size()) return bytes;
  const std::size_t plain = ascii_length(front);
  if (plain > 0) return bytes.substr(0, plain);
  const std::size_t feed = bytes.find('\n', kPiece - 1);
  return bytes.substr(0, feed == std::string_view::npos ? feed : feed + 1);
}

}  // namespace

int process_code_page() noexcept { return chosen_code_page.load(std::memory_order_relaxed); }

void set_process_code_page(int code_page) noexcept { chosen_code_page.store(code_page, std::memory_order_relaxed); }

void append_widened(int code_page, std::string_view bytes, std::u16string& to) {
  if (!keeps_ascii(code_page)) {
    to += widen(code_page, bytes);
    return;
  }
  while (!bytes.empty()) {
    const std::string_view piece = first_piece(bytes);
    to += widen(code_page, piece);
    bytes.remove_prefix(piece.size());
  }
}

std::string process_bytes(std::u16string_view text) { return narrow(process_code_page(), text); }

std::u16string process_text(std::string_view bytes) { return widen(process_code_page(), bytes); }

}  // namespace vellobar::platform
