// What code pages and dates give, as lines of text that can be compared between systems. The Windows build wrote
// `platform_record.inc` with it (see `record_platform.cpp`); the test compares every build with that file.
#pragma once

#include <string>
#include <vector>

namespace vellobar::platform {

/// The code page numbers that clients can choose by name, each once.
const std::vector<int>& recorded_pages();

/// A page of one or two bytes a character. The single bytes from 0x80 on stand as they are, sixteen a line; for each
/// lead byte a checksum over all 256 second bytes; for each 256 UTF-16 units a checksum over what they are written as,
/// with "?" in place of a best fit (a code that does not read as the unit again). A page that is not there is one line
/// that says so.
std::vector<std::string> record_of_page(int page);

/// UTF-8 and UTF-7 in both directions: a checksum over all short texts of telling bytes or units, for each first one.
std::vector<std::string> record_of_unicode_transformations();

/// Dates: a checksum over days, times of day, rounding and limits, for each kind of conversion and century.
std::vector<std::string> record_of_dates();

/// All of the above.
std::vector<std::string> platform_record();

}  // namespace vellobar::platform
