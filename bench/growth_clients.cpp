// What a client does with a mailbox from its locking to its end, with the mail of tests/limits/huge_mail.h.
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "growth.h"
#include "platform/temporary_file.h"
#include "tests/limits/huge_mail.h"

namespace vellobar::bench {
namespace {

using tests::HugeMail;

/// A mailbox in a folder of its own, which also takes what reading it leaves behind.
class MailFile {
 public:
  MailFile(const HugeMail& mail, std::size_t size) {
    std::filesystem::create_directory(folder_);
    std::ofstream file(path_, std::ios::binary);
    mail.write(file, size);
  }
  ~MailFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  MailFile(const MailFile&) = delete;
  MailFile& operator=(const MailFile&) = delete;

  std::size_t live_with() const {
    std::size_t seen = 0;
    CVellobar control;
    control.SetFilename(std::u16string(path_.begin(), path_.end()));
    for (const tests::ClientStep& step : tests::client_steps()) seen += step.act(control);
    return seen;
  }

 private:
  std::string folder_ =
      platform::temporary_folder() + "vellobar_growth_client_" + std::to_string(platform::process_identifier()) + "/";
  std::string path_ = folder_ + "mail";
  platform::FixedTemporaryFolder fixed_{folder_};
};

template <std::size_t index>
GrowthWork live_with(std::size_t size) {
  return [file = std::make_shared<MailFile>(tests::huge_mails()[index], size)] { return file->live_with(); };
}

constexpr std::size_t kMails = 17;

template <std::size_t... indices>
constexpr auto all_works(std::index_sequence<indices...>) {
  return std::array{live_with<indices>...};
}

std::vector<GrowthFamily> make_families() {
  constexpr auto kWorks = all_works(std::make_index_sequence<kMails>());
  // Also half of it makes more objects than stay in memory, so that both are read in the same way.
  constexpr std::size_t kLargest = std::size_t{1} << 20;
  std::vector<GrowthFamily> families;
  for (std::size_t i = 0; i < kMails; ++i) families.push_back({tests::huge_mails()[i].name, kWorks[i], kLargest});
  return families;
}

}  // namespace

std::span<const GrowthFamily> client_growth_families() {
  static const std::vector<GrowthFamily> families = make_families();
  return families;
}

}  // namespace vellobar::bench
