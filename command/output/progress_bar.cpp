#include "command/output/progress_bar.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <cstdio>
#include <utility>

namespace vellobar::command {

namespace {

constexpr std::chrono::milliseconds kBeforeFirst{500};
constexpr std::chrono::milliseconds kBetween{100};
constexpr int kWidth = 40;

bool standard_error_is_a_terminal() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return ::isatty(STDERR_FILENO) != 0;
#endif
}

}  // namespace

ProgressBar::ProgressBar(std::string title)
    : title_(std::move(title)), on_terminal_(standard_error_is_a_terminal()), next_draw_(Clock::now() + kBeforeFirst) {}

ProgressBar::~ProgressBar() { clear(); }

void ProgressBar::clear() {
  if (drawn_) std::fputs("\r\033[K", stderr);
  drawn_ = false;
}

void ProgressBar::show(std::int64_t done, std::int64_t total) {
  if (!on_terminal_ || total <= 0 || Clock::now() < next_draw_) return;
  next_draw_ = Clock::now() + kBetween;
  drawn_ = true;
  const double share = std::clamp(static_cast<double>(done) / static_cast<double>(total), 0.0, 1.0);
  std::string bar(kWidth, '.');
  std::fill_n(bar.begin(), static_cast<int>(share * kWidth), '#');
  std::fprintf(stderr, "\r%s [%s] %3d%%", title_.c_str(), bar.c_str(), static_cast<int>(share * 100));
  std::fflush(stderr);
}

}  // namespace vellobar::command
