// Name and type of an attachment, as its headers tell them: the Content-Type first, and the Content-Disposition where
// that gives no name. Values come as bytes in the process code page and are used as they stand, folds included.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vellobar::attachments {

struct Description {
  std::u16string name;
  std::u16string type;
};

/// The description made of the first Content-Type and the first Content-Disposition value; none for a header that is
/// missing. A name in the Content-Type is decoded as RFC 2047 words; a disposition that gives the name gives its own
/// word ("attachment") as the type too.
Description describe(const std::optional<std::string>& content_type,
                     const std::optional<std::string>& content_disposition);

/// The name among the parameters of a Content-Type, undecoded; empty when there is none.
std::string_view name_parameter(std::string_view parameters);
/// The file name among the parameters of a Content-Disposition: only one in double quotes counts.
std::string_view filename_parameter(std::string_view parameters);

}  // namespace vellobar::attachments
