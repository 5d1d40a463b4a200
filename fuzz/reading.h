// Everything that reading tells about a message, as one text: what two ways of reading must agree on, and what reading
// must not change.
#pragma once

#include <string>

namespace vellobar {
class CMessage;
}

namespace vellobar::fuzz {

/// The tree of parts with positions, headers and texts.
std::string told_by_tree(CMessage& message);

/// Named headers and decoded texts.
std::string told_by_texts(CMessage& message);

/// Attachments, which are searched for once.
std::string told_by_attachments(CMessage& message);

/// All of that.
std::string told_by_properties(CMessage& message);

}  // namespace vellobar::fuzz
