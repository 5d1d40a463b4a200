// The steps that every new message is made of. A message that stands alone gets its first headers, then its texts (see
// CMessage), then the headers that name this component, then its attachments; `CMessage::Save` writes it.
#pragma once

#include <memory>
#include <string_view>

namespace vellobar {
class CMessage;
}

namespace vellobar::compose {

/// A message that stands alone, with sender, recipients, subject and the present date.
std::shared_ptr<CMessage> new_message(std::u16string_view from, std::u16string_view to, std::u16string_view subject);

/// Sets the headers that name the component, and a new identifier.
void add_component_headers(CMessage& message);

/// Adds a file as a Base64 part of this name. Errors 30007 (no file name), 30011 (the file cannot be read), 30012 and
/// 30004 (temporary file).
void attach(CMessage& message, std::u16string_view name, std::u16string_view filename);

}  // namespace vellobar::compose
