#include "tests/codecs/reference_codecs.h"

#include <algorithm>
#include <cstring>

namespace vellobar::codecs::reference {

namespace {

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kBinHex[] = "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";

int byte_at(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

std::string uu_letters() {
  std::string letters = "`";
  for (int value = 1; value < 64; ++value) letters += static_cast<char>(value + 32);
  return letters;
}

/// All groups of three; a short last one has as many letters as its bytes reach.
std::string encode(std::string_view bytes, std::string_view letters) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const int bits = byte_at(bytes, i) * 65536 + byte_at(bytes, i + 1) * 256 + byte_at(bytes, i + 2);
    const std::size_t reached = std::min<std::size_t>(bytes.size() - i, 3) + 1;
    for (std::size_t k = 0; k < reached; ++k) text += letters[static_cast<std::size_t>(bits >> (18 - 6 * k)) % 64];
  }
  return text;
}

std::string joined(std::string_view values) {
  int bits = 0;
  for (std::size_t k = 0; k < 4; ++k) bits = bits * 64 + (k < values.size() ? values[k] : 0);
  return {static_cast<char>(bits / 65536), static_cast<char>(bits / 256 % 256), static_cast<char>(bits % 256)};
}

/// Decodes one group into `bytes`; false when a stranger cuts it.
bool decode_group(const std::string& group, const char* letters, std::string& bytes) {
  std::string values;
  for (const char letter : group) {
    const char* found = letter == '\0' ? nullptr : std::strchr(letters, letter);
    if (letter != '\0' && found == nullptr) break;
    values += static_cast<char>(found == nullptr ? 0 : found - letters);
  }
  const bool whole = values.size() == group.size();
  const std::size_t yield = whole ? 3 : values.empty() ? 0 : values.size() - 1;
  bytes += joined(values).substr(0, yield);
  return whole;
}

std::string decode(std::string_view text, const char* letters) {
  std::string bytes, group;
  for (const char character : text) {
    if (character == '\r' || character == '\n') continue;
    group += character;
    if (group.size() < 4) continue;
    if (!decode_group(group, letters, bytes)) return bytes;
    group.clear();
  }
  if (!group.empty()) decode_group(group, letters, bytes);
  return bytes;
}

char uu_value(char character) { return static_cast<char>((static_cast<unsigned char>(character) + 224) % 64); }

}  // namespace

std::string encode_base64(std::string_view bytes) {
  std::string text = encode(bytes, kBase64);
  while (text.size() % 4 != 0) text += '=';
  return text;
}

std::string encode_base64_file(std::string_view bytes) {
  std::string text;
  while (bytes.size() >= 57) {
    text += encode_base64(bytes.substr(0, 57)) + "\r\n";
    bytes.remove_prefix(57);
  }
  return text + encode_base64(bytes) + "\r\n";
}

std::string decode_base64(std::string_view text) { return decode(text, kBase64); }

std::string encode_uu(std::string_view bytes) {
  static const std::string letters = uu_letters();
  return encode(bytes, letters);
}

std::string encode_uu_file(std::string_view bytes) {
  std::string text;
  char length = '`';
  for (; bytes.size() >= 45; bytes.remove_prefix(45)) {
    length = 'M';
    text += length + encode_uu(bytes.substr(0, 45)) + "\r\n";
  }
  if (bytes.size() % 3 == 0) return text + length + encode_uu(bytes);
  return text + static_cast<char>(bytes.size() + 32) + encode_uu(bytes) + "\r\n";
}

std::string decode_uu(std::string_view text) {
  std::string bytes, group;
  for (std::size_t i = 0; i < text.size(); ++i) {
    group.push_back(uu_value(text[i]));
    if (group.size() < 4 && i + 1 < text.size()) continue;
    bytes += joined(group);
    group.clear();
  }
  return bytes;
}

std::string decode_uu_file(std::string_view file, std::size_t start, std::size_t end) {
  for (const bool needs_begin : {true, false}) {
    bool begun = !needs_begin;
    std::string bytes, made, group;
    int length = -1;
    std::size_t position = start;
    while (position < end && position < file.size()) {
      std::string_view line = file.substr(position, 254);
      line = line.substr(0, std::min(line.find('\n'), line.size() - 1) + 1);
      position += line.size();
      line = line.substr(0, line.find_first_of("\r\n"));
      if (!begun) {
        begun = line.find("begin") != line.npos;
        continue;
      }
      if (line.substr(0, 3) == "end") break;
      for (const char character : line) {
        if (length < 0) {
          length = uu_value(character);
          continue;
        }
        group.push_back(uu_value(character));
        if (group.size() == 4) {
          made += joined(group);
          group.clear();
        }
        if (made.size() < static_cast<std::size_t>(length)) continue;
        bytes += made.substr(0, static_cast<std::size_t>(length));
        made.clear();
        length = -1;
      }
    }
    if (!group.empty()) made += joined(group);
    if (begun) return bytes + made;
  }
  return "";
}

std::string encode_binhex_file(std::string_view bytes) {
  std::string text;
  for (; bytes.size() >= 48; bytes.remove_prefix(48)) text += encode(bytes.substr(0, 48), kBinHex) + "\r\n";
  return text + encode(bytes, kBinHex);
}

std::string decode_binhex_file(std::string_view text) {
  const std::size_t colon = text.find(':');
  return decode(colon == text.npos ? text : text.substr(colon + 1), kBinHex);
}

std::string encode_quoted_printable(std::string_view bytes, std::size_t limit) {
  std::string text;
  std::size_t pending = 0;
  char previous = 0;
  for (const char byte : bytes) {
    const unsigned value = static_cast<unsigned char>(byte);
    std::string written(1, byte);
    if (value > 127 || byte == '=') written = {'=', "0123456789ABCDEF"[value / 16], "0123456789ABCDEF"[value % 16]};
    bool line_ended = previous == '\r' && byte == '\n';
    if (pending < limit || byte == '\r' || line_ended) {
      text += written;
      pending += written.size();
    } else {
      text += "=\r\n" + written;
      line_ended = true;
    }
    if (line_ended) pending = 0;
    previous = byte;
  }
  return text;
}

namespace {

char raised(char character) {
  return character >= 'a' && character <= 'z' ? static_cast<char>(character - 32) : character;
}

int hex_value(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}

std::string decode_quoted_printable(std::string_view text, bool underscore_is_space, bool keeps_broken) {
  std::string bytes;
  char p1 = 0, p2 = 0;
  for (char c : text) {
    if (p2 == '=') {
      if (p1 != '\r' || c != '\n') {
        p1 = raised(p1);
        c = raised(c);
        const bool is_broken = hex_value(p1) < 0 || hex_value(c) < 0;
        const char value = static_cast<char>(hex_value(p1) * 16 + hex_value(c));
        bytes += is_broken && keeps_broken ? std::string{'=', p1, c} : std::string(1, value);
      }
    } else if (p1 != '=' && c != '=') {
      bytes += c == '_' && underscore_is_space ? ' ' : c;
    }
    p2 = p1;
    p1 = c;
  }
  return bytes;
}

}  // namespace

std::string decode_quoted_printable(std::string_view text, bool underscore_is_space) {
  return decode_quoted_printable(text, underscore_is_space, true);
}

std::string decode_quoted_printable_file(std::string_view text) { return decode_quoted_printable(text, false, false); }

}  // namespace vellobar::codecs::reference
