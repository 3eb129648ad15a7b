// The boundary rule for text spliced into the store's SQL.
#include "TarvoFramework/StoreText.h"

#include <array>
#include <cstdio>

namespace tarvo {
namespace {

// Every column of both tables, and the names SQLite accepts for a row id.
// Inside double quotes SQLite takes any of these, matched without regard to
// ASCII case, as a column reference instead of a string.
constexpr std::array<std::string_view, 8> kColumnNames = {
    "polygonid", "polygonname", "polygonguid", "latitude",
    "longitude", "rowid",       "oid",         "_rowid_"};

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? c - 'A' + 'a' : c; }

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
  }
  return true;
}

// Length of the UTF-8 sequence starting at text[at], or 0 when it is not
// well formed (overlong forms, surrogates and code points past U+10FFFF
// included).
std::size_t utf8SequenceLength(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return static_cast<unsigned char>(text[i]);
  };
  const unsigned char lead = byte(at);
  std::size_t length = 0;
  unsigned char min = 0x80, max = 0xBF;  // allowed range of the 2nd byte
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) min = 0xA0;
    if (lead == 0xED) max = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) min = 0x90;
    if (lead == 0xF4) max = 0x8F;
  } else {
    return 0;
  }
  if (at + length > text.size()) return 0;
  if (byte(at + 1) < min || byte(at + 1) > max) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (byte(at + i) < 0x80 || byte(at + i) > 0xBF) return 0;
  }
  return length;
}

std::string controlCharacterProblem(unsigned char c, std::size_t at) {
  if (c == 0) return "contains a NUL byte at byte " + std::to_string(at + 1);
  char code[16];
  std::snprintf(code, sizeof code, c < 0x80 ? "0x%02X" : "U+%04X", c);
  return std::string("contains the control character ") + code + " at byte " +
         std::to_string(at + 1);
}

}  // namespace

std::optional<std::string> storeTextProblem(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const auto c = static_cast<unsigned char>(text[at]);
    if (c == '"') return "contains a double quote";
    if (c < 0x20 || c == 0x7F) return controlCharacterProblem(c, at);
    const std::size_t length = utf8SequenceLength(text, at);
    if (length == 0) {
      return "is not valid UTF-8 at byte " + std::to_string(at + 1);
    }
    // U+0080..U+009F, the second set of control characters.
    if (c == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0) {
      return controlCharacterProblem(static_cast<unsigned char>(text[at + 1]),
                                     at);
    }
    at += length;
  }
  for (std::string_view column : kColumnNames) {
    if (equalsIgnoringAsciiCase(text, column)) {
      return "is a column name of the store, which its SQL would read as "
             "that column";
    }
  }
  return std::nullopt;
}

}  // namespace tarvo
