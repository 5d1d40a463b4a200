// The word that somebody probably meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vellobar::command {

/// How many letters must be typed, left out, changed or exchanged with their neighbour to make one word of the other.
std::size_t distance_between(std::string_view left, std::string_view right);

/// The candidate that is nearest to the word; empty when none is near. The first one of several counts. A candidate
/// that the word is the beginning of is near.
std::string nearest_word(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace vellobar::command
