#include "tests/fuzz/mutation.h"

#include <algorithm>
#include <iterator>

namespace vellobar::tests {

namespace {

constexpr std::size_t kLongest = 4096;

/// What decides about mail.
constexpr std::string_view kTokens[] = {"\n",
                                        "\r\n",
                                        "\nFrom ",
                                        "\n\n",
                                        ": ",
                                        "\n\t",
                                        "--",
                                        "Content-Type: multipart/mixed; boundary=\"b\"\n",
                                        "--b\n",
                                        "--b--\n",
                                        "=?utf-8?b?",
                                        "=?utf-7?q?",
                                        "?=",
                                        "=\r\n",
                                        "=3D",
                                        "\xFF",
                                        "begin 644 a\n",
                                        "end\n",
                                        "\"",
                                        "<a@b>, "};

}  // namespace

std::string Mutation::next() {
  std::string input = inputs_[below(inputs_.size())];
  for (std::size_t changes = 1 + below(6); changes > 0; --changes) change(input);
  if (input.size() > kLongest) input.resize(kLongest);
  return input;
}

std::string_view Mutation::piece(const std::string& of) {
  const std::size_t from = below(of.size());
  return std::string_view(of).substr(from, 1 + below(of.size() - from));
}

void Mutation::change(std::string& input) {
  const std::size_t place = below(input.size() + 1);
  switch (below(6)) {
    case 0:
      if (place < input.size()) input[place] = static_cast<char>(below(256));
      return;
    case 1:
      input.insert(place, 1, static_cast<char>(below(256)));
      return;
    case 2:
      input.insert(place, kTokens[below(std::size(kTokens))]);
      return;
    case 3:
      input.erase(place, 1 + below(16));
      return;
    case 4:
      input.insert(place, std::string(piece(input)));
      return;
    default:
      input.replace(place, std::min(below(32), input.size() - place), piece(inputs_[below(inputs_.size())]));
  }
}

}  // namespace vellobar::tests
