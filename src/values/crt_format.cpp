#include "values/crt_format.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vantor {

namespace {

// mingw-w64's own printf, whatever the ANSI-stdio setting of the translation unit: the
// system runtime's would take "L" as a plain double.
#if defined(_WIN32)
#define VANTOR_SNPRINTF __mingw_snprintf
#else
#define VANTOR_SNPRINTF std::snprintf
#endif

struct Conversion {
  std::string flags;
  int width = -1;
  int precision = -1;
  enum Length { kNone, kChar, kShort, kLong, kLongLong, kLongDouble, kSize } length = kNone;
  char conversion = 0;
};

// Pads to the width the way the runtime does: spaces on the left, on the right with "-",
// or zeros after the sign with "0" (numbers only).
std::string pad(std::string text, const Conversion& c, bool numeric) {
  if (c.width < 0 || static_cast<int>(text.size()) >= c.width) return text;
  std::size_t missing = static_cast<std::size_t>(c.width) - text.size();
  if (c.flags.find('-') != std::string::npos) return text + std::string(missing, ' ');
  if (numeric && c.flags.find('0') != std::string::npos) {
    std::size_t at = (!text.empty() && (text[0] == '-' || text[0] == '+' || text[0] == ' ')) ? 1 : 0;
    if (text.compare(at, 2, "0x") == 0 || text.compare(at, 2, "0X") == 0) at += 2;
    return text.insert(at, missing, '0');
  }
  return std::string(missing, ' ') + text;
}

std::string spec_text(const Conversion& c, bool with_width, const char* length) {
  std::string spec(1, '%');
  spec += c.flags;
  if (with_width && c.width >= 0) spec += std::to_string(c.width);
  if (c.precision >= 0) {
    spec += '.';
    spec += std::to_string(c.precision);
  }
  spec += length;
  spec += c.conversion;
  return spec;
}

// Leaves at least two exponent digits and no more than needed.
std::string normalise_exponent(std::string text) {
  std::size_t e = text.find_first_of("eE");
  if (e == std::string::npos || e + 1 >= text.size()) return text;
  std::size_t digits = e + 1;
  if (text[digits] == '+' || text[digits] == '-') ++digits;
  std::size_t end = digits;
  while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
  while (end - digits > 2 && text[digits] == '0') text.erase(digits, 1), --end;
  return text;
}

std::string format_floating(const Conversion& c, long double value) {
  bool upper = c.conversion >= 'A' && c.conversion <= 'Z';
  std::string text;
  if (std::isnan(value) || std::isinf(value)) {
    text = std::signbit(value) ? "-" : (c.flags.find('+') != std::string::npos ? "+" : "");
    text += std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
    Conversion no_zero = c;
    no_zero.flags.erase(std::remove(no_zero.flags.begin(), no_zero.flags.end(), '0'), no_zero.flags.end());
    return pad(text, no_zero, false);
  }
  Conversion bounded = c;
  if (bounded.precision > 400) bounded.precision = 400;
  std::string spec = spec_text(bounded, false, "L");
  int length = VANTOR_SNPRINTF(nullptr, 0, spec.c_str(), value);
  if (length < 0) return pad(std::string(), c, false);
  text.assign(static_cast<std::size_t>(length) + 1, '\0');
  VANTOR_SNPRINTF(text.data(), text.size(), spec.c_str(), value);
  text.resize(static_cast<std::size_t>(length));
  if (c.conversion != 'f' && c.conversion != 'F' && c.conversion != 'a' && c.conversion != 'A')
    text = normalise_exponent(text);
  return pad(text, c, true);
}

}  // namespace

std::string crt_vformat(const char* format, std::va_list arguments) {
  std::string out;
  for (const char* p = format; *p;) {
    if (*p != '%') {
      out += *p++;
      continue;
    }
    ++p;
    if (*p == '%') {
      out += '%';
      ++p;
      continue;
    }
    Conversion c;
    while (*p && std::strchr("-+ #0", *p)) c.flags += *p++;
    if (*p == '*') {
      c.width = va_arg(arguments, int);
      if (c.width < 0) c.flags += '-', c.width = -c.width;
      ++p;
    } else {
      while (*p >= '0' && *p <= '9') c.width = (c.width < 0 ? 0 : c.width) * 10 + (*p++ - '0');
    }
    if (*p == '.') {
      ++p;
      c.precision = 0;
      if (*p == '*') {
        c.precision = va_arg(arguments, int);
        ++p;
      } else {
        while (*p >= '0' && *p <= '9') c.precision = c.precision * 10 + (*p++ - '0');
      }
    }
    if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
      c.length = Conversion::kLongLong;
      p += 3;
    } else if (p[0] == 'I' && p[1] == '3' && p[2] == '2') {
      p += 3;
    } else if (p[0] == 'h' && p[1] == 'h') {
      c.length = Conversion::kChar;
      p += 2;
    } else if (p[0] == 'l' && p[1] == 'l') {
      c.length = Conversion::kLongLong;
      p += 2;
    } else if (*p == 'h') {
      c.length = Conversion::kShort, ++p;
    } else if (*p == 'l') {
      c.length = Conversion::kLong, ++p;
    } else if (*p == 'L') {
      c.length = Conversion::kLongDouble, ++p;
    } else if (*p == 'z' || *p == 'j' || *p == 't' || *p == 'I') {
      c.length = Conversion::kSize, ++p;
    }
    c.conversion = *p;
    if (!*p) break;
    ++p;

    char buffer[160];
    if (c.precision > 120 && std::strchr("diuxXo", c.conversion)) c.precision = 120;
    switch (c.conversion) {
      case 'd':
      case 'i': {
        long long value;
        switch (c.length) {
          case Conversion::kLongLong:
          case Conversion::kSize: value = va_arg(arguments, long long); break;
          case Conversion::kLong: value = va_arg(arguments, long); break;
          default: value = va_arg(arguments, int); break;
        }
        if (c.length == Conversion::kChar) value = static_cast<signed char>(value);
        if (c.length == Conversion::kShort) value = static_cast<short>(value);
        VANTOR_SNPRINTF(buffer, sizeof buffer, spec_text(c, false, "ll").c_str(), value);
        out += pad(buffer, c, c.precision < 0);
        break;
      }
      case 'u':
      case 'x':
      case 'X':
      case 'o': {
        unsigned long long value;
        switch (c.length) {
          case Conversion::kLongLong:
          case Conversion::kSize: value = va_arg(arguments, unsigned long long); break;
          case Conversion::kLong: value = va_arg(arguments, unsigned long); break;
          default: value = va_arg(arguments, unsigned int); break;
        }
        if (c.length == Conversion::kChar) value = static_cast<unsigned char>(value);
        if (c.length == Conversion::kShort) value = static_cast<unsigned short>(value);
        VANTOR_SNPRINTF(buffer, sizeof buffer, spec_text(c, false, "ll").c_str(), value);
        out += pad(buffer, c, c.precision < 0);
        break;
      }
      case 'c': {
        std::string one(1, static_cast<char>(va_arg(arguments, int)));
        out += pad(one, c, false);
        break;
      }
      case 's': {
        const char* text = va_arg(arguments, const char*);
        std::string piece = text ? text : "(null)";
        if (c.precision >= 0 && piece.size() > static_cast<std::size_t>(c.precision))
          piece.resize(static_cast<std::size_t>(c.precision));
        out += pad(piece, c, false);
        break;
      }
      case 'p': {
        auto value = reinterpret_cast<std::uintptr_t>(va_arg(arguments, void*));
        VANTOR_SNPRINTF(buffer, sizeof buffer, "%016llX", static_cast<unsigned long long>(value));
        out += pad(buffer, c, false);
        break;
      }
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
      case 'a':
      case 'A': {
        long double value = c.length == Conversion::kLongDouble ? va_arg(arguments, long double)
                                                                : static_cast<long double>(va_arg(arguments, double));
        out += format_floating(c, value);
        break;
      }
      default:  // an unknown conversion is written as it stands
        out += '%';
        out += c.conversion;
        break;
    }
  }
  return out;
}

std::string crt_format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::string text = crt_vformat(format, arguments);
  va_end(arguments);
  return text;
}

}  // namespace vantor
