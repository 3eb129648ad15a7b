// Locale-independent reading of coordinate texts.
#include "store/CoordinateText.h"

#include <locale.h>
#include <stdlib.h>

#include <string>

namespace tarvo {
namespace store {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// ASCII white space only, so that the host's locale cannot change it.
bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' ||
         c == '\r';
}

const char* skipDigits(const char* p) {
  while (isDigit(*p)) ++p;
  return p;
}

// The end of the decimal number that starts at `p`, or `p` itself when no
// number starts there. The scan is done by hand because strtod would also
// take hexadecimal, "inf" and "nan", which a coordinate text never means.
const char* endOfDecimal(const char* p) {
  const char* q = p;
  if (*q == '+' || *q == '-') ++q;
  const char* intEnd = skipDigits(q);
  const char* end = intEnd;
  bool digits = intEnd != q;
  if (*end == '.') {
    const char* fracEnd = skipDigits(end + 1);
    if (digits || fracEnd != end + 1) {
      digits = true;
      end = fracEnd;
    }
  }
  if (!digits) return p;
  if (*end == 'e' || *end == 'E') {
    const char* e = end + 1;
    if (*e == '+' || *e == '-') ++e;
    if (isDigit(*e)) end = skipDigits(e);
  }
  return end;
}

// The "C" locale, made once and never freed, so that the decimal point is
// "." even when the host has switched the process to another locale.
locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t{});
  return locale;
}

}  // namespace

double coordinateFromText(const char* text) {
  if (text == nullptr) return 0.0;
  while (isBlank(*text)) ++text;
  const char* end = endOfDecimal(text);
  if (end == text) return 0.0;
  const std::string number(text, end);
  const locale_t c = cLocale();
  // Without a "C" locale object (out of memory) the process locale is used.
  return c != locale_t{} ? strtod_l(number.c_str(), nullptr, c)
                         : strtod(number.c_str(), nullptr);
}

}  // namespace store
}  // namespace tarvo
