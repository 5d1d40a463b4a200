// Checks that nothing a client reads costs the square of what the mail holds: runs each family of growth.h under
// Callgrind (Debian's valgrind) at half its largest size and at the largest, and prints how the instructions grew.
// Ends with a failure when one grew by more than the limit.
//
//   growth [--largest BYTES] [NAME...]  all families, or those whose name or area is given; smaller ones for a quick
//   look growth --run NAME SIZE              one family once, without counting: what the check itself runs under
//   Callgrind
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "growth.h"

/// Callgrind counts between the start and the end of this function, which it knows by its plain name.
extern "C" __attribute__((noinline)) std::size_t growth_counted(const vellobar::bench::GrowthWork& work) {
  const std::size_t result = work();
  // Keeps the call from becoming the last jump of the function.
  asm volatile("" ::: "memory");
  return result;
}

namespace vellobar::bench {

std::string repeated(std::string_view piece, std::size_t size) {
  std::string text;
  while (text.size() < size) text += piece;
  return text;
}

namespace {

constexpr double kLimit = 2.3;

struct Area {
  std::string_view name;
  std::span<const GrowthFamily> (*families)();
};
constexpr std::array kAreas = {Area{"words", word_growth_families}, Area{"headers", header_growth_families},
                               Area{"parts", part_growth_families}, Area{"clients", client_growth_families}};

const GrowthFamily& family_of_name(std::string_view name) {
  for (const Area& area : kAreas) {
    for (const GrowthFamily& family : area.families()) {
      if (family.name == name) return family;
    }
  }
  throw std::runtime_error("no family " + std::string(name));
}

int run_once(std::string_view name, std::size_t size) {
  const GrowthWork work = family_of_name(name).prepare(size);
  const std::size_t result = growth_counted(work);
  std::fprintf(stderr, "%zu\n", result);
  return EXIT_SUCCESS;
}

/// The number behind "summary:" in what Callgrind wrote.
long long instructions_in(const std::string& path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("summary:")) return std::atoll(line.c_str() + std::string_view("summary:").size());
  }
  throw std::runtime_error("valgrind left no count");
}

long long count_instructions(const std::string& program, const GrowthFamily& family, std::size_t size) {
  const auto folder = std::filesystem::temp_directory_path();
  const std::string out = (folder / ("vellobar_growth_" + std::to_string(getpid()))).string();
  const std::string command =
      "valgrind --quiet --tool=callgrind --toggle-collect=growth_counted --callgrind-out-file='" + out + "' '" +
      program + "' --run '" + std::string(family.name) + "' " + std::to_string(size) + " 2>'" + out + ".log'";
  const int status = std::system(command.c_str());
  const long long count = status == 0 ? instructions_in(out) : -1;
  std::filesystem::remove(out);
  std::filesystem::remove(out + ".log");
  if (status != 0) throw std::runtime_error("failed: " + command);
  return count;
}

/// True when the family grew within the limit.
bool check(const std::string& program, const Area& area, const GrowthFamily& family, std::size_t largest) {
  const long long half = count_instructions(program, family, largest / 2);
  const long long whole = count_instructions(program, family, largest);
  const double growth = static_cast<double>(whole) / static_cast<double>(std::max(half, 1LL));
  const bool is_met = growth <= kLimit;
  std::printf("%-8.*s %-40.*s %8zu bytes %14lld  %8zu bytes %14lld  %5.2f  %s\n", static_cast<int>(area.name.size()),
              area.name.data(), static_cast<int>(family.name.size()), family.name.data(), largest / 2, half, largest,
              whole, growth, is_met ? "met" : "MISSED");
  std::fflush(stdout);
  return is_met;
}

bool is_wanted(const std::vector<std::string>& names, const Area& area, const GrowthFamily& family) {
  return names.empty() || std::any_of(names.begin(), names.end(), [&](const std::string& name) {
           return name == area.name || name == family.name;
         });
}

int check_all(const std::string& program, const std::vector<std::string>& names, std::size_t limit) {
  int missed = 0;
  int checked = 0;
  for (const Area& area : kAreas) {
    for (const GrowthFamily& family : area.families()) {
      if (!is_wanted(names, area, family)) continue;
      ++checked;
      if (!check(program, area, family, std::min(family.largest, limit))) ++missed;
    }
  }
  std::printf("%d families, %d grew by more than %.1f\n", checked, missed, kLimit);
  return checked > 0 && missed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace vellobar::bench

int main(int count, char** values) {
  std::vector<std::string> arguments(values + 1, values + count);
  try {
    if (arguments.size() == 3 && arguments[0] == "--run") {
      return vellobar::bench::run_once(arguments[1], std::stoul(arguments[2]));
    }
    std::size_t limit = std::numeric_limits<std::size_t>::max();
    if (arguments.size() >= 2 && arguments[0] == "--largest") {
      limit = std::stoul(arguments[1]);
      arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    return vellobar::bench::check_all(std::filesystem::canonical("/proc/self/exe").string(), arguments, limit);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "growth: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
