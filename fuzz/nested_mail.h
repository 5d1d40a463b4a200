// Mail whose parts nest deep, made of a few decisions.
#pragma once

#include <string>

#include "fuzz/choices.h"

namespace vellobar::fuzz {

/// A message of a mailbox with up to 40 multiparts one in the other, and parts in front of the inner one and behind it.
std::string nested_message(Choices& choices);

}  // namespace vellobar::fuzz
