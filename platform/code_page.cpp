#include "platform/code_page.h"

#include <atomic>

namespace vellobar::platform {

namespace {

std::atomic<int> chosen_code_page = kAnsiCodePage;

}  // namespace

int process_code_page() noexcept { return chosen_code_page.load(std::memory_order_relaxed); }

void set_process_code_page(int code_page) noexcept { chosen_code_page.store(code_page, std::memory_order_relaxed); }

std::string process_bytes(std::u16string_view text) { return narrow(process_code_page(), text); }

std::u16string process_text(std::string_view bytes) { return widen(process_code_page(), bytes); }

}  // namespace vellobar::platform
