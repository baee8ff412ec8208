#include "values/eval_tokens.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "values/error_codes.h"

namespace vantor {

namespace {

constexpr std::int32_t kStrengths[kOperatorCount] = {
    0,    0,    150,  100, 400, 400, 350, 350, 800, 1000,  // 0-9
    500,  500,  600,  600, 700, 700, 700, 300, 200, 250,   // 10-19
    900,  900,  950,  950, 400, 400, 900, 900, 900, 1000,  // 20-29
    1000, 1,    0,    0,   0,   0,   2,                    // 30-36
};

struct Spelling {
  const char* text;
  std::int32_t code;
  bool needs_equals_mode;
};

// In code order, each code's spellings together. The lone "." of component selection
// comes last so that the dotted words (".TRUE." among them) are tried before it.
constexpr Spelling kSpellings[] = {
    {"(", kOpOpen, false},          {")", kOpClose, false},
    {"&&", kOpAnd, false},          {".AND.", kOpAnd, false},
    {"||", kOpOr, false},           {".OR.", kOpOr, false},
    {">=", kOpGreaterEqual, false}, {".GE.", kOpGreaterEqual, false},
    {"<=", kOpLessEqual, false},    {".LE.", kOpLessEqual, false},
    {"!=", kOpNotEqual, false},     {".NE.", kOpNotEqual, false},
    {"==", kOpEqual, false},        {".EQ.", kOpEqual, false},
    {"=", kOpEqual, true},          {"**", kOpPower, false},
    {"->", kOpArrow, false},        {">>", kOpShiftRight, false},
    {"<<", kOpShiftLeft, false},    {"+", kOpPlus, false},
    {"-", kOpMinus, false},         {"*", kOpTimes, false},
    {"/", kOpDivide, false},        {"%", kOpRemainder, false},
    {"&", kOpBitAnd, false},        {"|", kOpBitOr, false},
    {"^", kOpBitXor, false},        {"~", kOpBitNot, false},
    {"!", kOpNot, false},           {".NOT.", kOpNot, false},
    {"[", kOpSubscriptOpen, false}, {"]", kOpSubscriptClose, false},
    {">", kOpGreater, false},       {".GT.", kOpGreater, false},
    {"<", kOpLess, false},          {".LT.", kOpLess, false},
    {",", kOpComma, false},         {".TRUE.", kOpTrue, false},
    {".FALSE.", kOpFalse, false},   {":", kOpSection, false},
    {".", kOpComponent, false},
};

bool is_letter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_hex_digit(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

bool equal_ignoring_case_prefix(std::string_view text, std::size_t at, const char* spelling) {
  std::size_t n = std::strlen(spelling);
  if (at + n > text.size()) return false;
  for (std::size_t i = 0; i < n; ++i)
    if (std::toupper(static_cast<unsigned char>(text[at + i])) != std::toupper(static_cast<unsigned char>(spelling[i])))
      return false;
  return true;
}

Token error_token(std::int32_t code, std::size_t start) {
  Token t;
  t.kind = Token::kError;
  t.code = code;
  t.start = start;
  return t;
}

Token operand_token(std::unique_ptr<element> e, std::size_t start) {
  Token t;
  t.kind = Token::kOperand;
  t.operand = std::move(e);
  t.start = start;
  return t;
}

std::unique_ptr<element> real_constant(double value, std::int32_t language) {
  // The narrowest REAL that holds the magnitude; values beyond REAL*8 keep 8 bytes under
  // the REAL*10 code.
  double magnitude = std::fabs(value);
  std::int32_t type;
  if (magnitude == 0) {
    type = kTypeReal4;
  } else if (magnitude > 1.0) {
    type = magnitude < 3.4028234663852886e38 ? kTypeReal4 : magnitude < 1.7976931348623157e308 ? kTypeReal8 : kTypeReal10;
  } else {
    type = magnitude > 1.1754943508222875e-38 ? kTypeReal4 : magnitude > 2.2250738585072014e-308 ? kTypeReal8 : kTypeReal10;
  }
  auto e = make_element(0, language);
  if (type == kTypeReal10)
    set_constant(*e, &value, 8, kTypeReal10);
  else
    set_real_constant(*e, value, type);
  return e;
}

}  // namespace

std::int32_t operator_strength(std::int32_t code) {
  return code >= 0 && code < kOperatorCount ? kStrengths[code] : 0;
}

bool is_unary_operator(std::int32_t code) {
  return code == kOpBitNot || code == kOpNot || code == kOpDereference || code == kOpNegate || code == kOpAddressOf;
}

bool is_intrinsic_operator(std::int32_t code) { return code == kOpLength || code == kOpAddress; }

Token Tokenizer::next() {
  while (position_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[position_]))) ++position_;
  Token t;
  t.start = position_;
  if (position_ >= text_.size()) return t;
  char c = peek();
  if (is_digit(c) || (c == '.' && is_digit(peek(1)))) return number();
  if (c == '\'') return language_ == kLangC ? c_character() : fortran_string();
  if (is_letter(c) || c == '_') return identifier();
  return operator_token();
}

Token Tokenizer::operator_token() {
  std::size_t start = position_;
  for (const Spelling& s : kSpellings) {
    if (s.needs_equals_mode && !equals_compares_) continue;
    if (equal_ignoring_case_prefix(text_, position_, s.text)) {
      position_ += std::strlen(s.text);
      Token t;
      t.kind = Token::kOperator;
      t.code = s.code;
      t.start = start;
      return t;
    }
  }
  if (peek() == '=') {  // an assignment's "=": the caller reads on from here
    Token t;
    t.kind = Token::kStop;
    t.start = start;
    return t;
  }
  return error_token(kErrorSyntax, start);
}

// A "." after the digits of a number is a dotted operator (".EQ.") when a letter follows
// it, unless that letter is an exponent's E followed by a digit or a sign (1.E5, 1.e-3).
bool Tokenizer::at_dotted_operator(std::size_t dot) const {
  char after = dot + 1 < text_.size() ? text_[dot + 1] : '\0';
  if (!is_letter(after)) return false;
  if (after != 'E' && after != 'e') return true;
  char next = dot + 2 < text_.size() ? text_[dot + 2] : '\0';
  return !(is_digit(next) || next == '+' || next == '-');
}

Token Tokenizer::number() {
  std::size_t start = position_;
  // Hexadecimal.
  if (peek() == '0' && (peek(1) == 'x' || peek(1) == 'X')) {
    position_ += 2;
    if (!is_hex_digit(peek())) return error_token(kErrorBadConstant, start);
    std::uint64_t value = 0;
    while (is_hex_digit(peek())) {
      if (value >> 60) return error_token(kErrorBadConstant, start);
      char h = static_cast<char>(std::tolower(static_cast<unsigned char>(peek())));
      value = value * 16 + static_cast<std::uint64_t>(is_digit(h) ? h - '0' : h - 'a' + 10);
      ++position_;
    }
    bool long_suffix = peek() == 'L' || peek() == 'l';
    auto e = make_element(0, language_);
    if (value <= 0xFFFFFFFFu && !long_suffix) {
      set_integer_constant(*e, static_cast<std::int64_t>(value), kTypeUnsigned4);
    } else {
      if (long_suffix) ++position_;
      set_integer_constant(*e, static_cast<std::int64_t>(value), kTypeUnsigned8);
    }
    return operand_token(std::move(e), start);
  }
  // Octal.
  if (peek() == '0' && is_digit(peek(1))) {
    ++position_;
    std::uint64_t value = 0;
    while (peek() >= '0' && peek() <= '7') {
      value = value * 8 + static_cast<std::uint64_t>(peek() - '0');
      if (value > 0xFFFFFFFFu) return error_token(kErrorBadConstant, start);
      ++position_;
    }
    auto e = make_element(0, language_);
    set_integer_constant(*e, static_cast<std::int64_t>(value), kTypeUnsigned4);
    return operand_token(std::move(e), start);
  }
  // Decimal: an integer unless a fraction or an exponent follows the digits.
  std::size_t digits_end = position_;
  while (digits_end < text_.size() && is_digit(text_[digits_end])) ++digits_end;
  char after = digits_end < text_.size() ? text_[digits_end] : '\0';
  bool real = (after == '.' && !at_dotted_operator(digits_end)) || after == 'E' || after == 'e' || after == 'D' ||
              after == 'd';
  if (real) {
    std::string literal(text_.substr(start, digits_end - start));
    std::size_t p = digits_end;
    if (p < text_.size() && text_[p] == '.') {
      literal += text_[p++];
      while (p < text_.size() && is_digit(text_[p])) literal += text_[p++];
    }
    if (p < text_.size() && std::strchr("EeDd", text_[p])) {
      std::size_t exponent = p + 1;
      if (exponent < text_.size() && (text_[exponent] == '+' || text_[exponent] == '-')) ++exponent;
      if (exponent < text_.size() && is_digit(text_[exponent])) {
        literal += 'e';
        literal.append(text_.substr(p + 1, exponent - (p + 1)));
        p = exponent;
        while (p < text_.size() && is_digit(text_[p])) literal += text_[p++];
      } else if (literal.find('.') == std::string::npos) {
        return error_token(kErrorBadConstant, start);  // "12E" or "3Dx": no exponent digits
      }
    }
    position_ = p;
    double value = std::strtod(literal.c_str(), nullptr);
    return operand_token(real_constant(value, language_), start);
  }

  std::uint64_t value = 0;
  bool overflow = false;
  for (std::size_t p = position_; p < digits_end; ++p) {
    std::uint64_t digit = static_cast<std::uint64_t>(text_[p] - '0');
    if (value > (UINT64_MAX - digit) / 10) overflow = true;
    value = value * 10 + digit;
  }
  std::string literal(text_.substr(start, digits_end - start));
  position_ = digits_end;
  bool wide = false;
  if (peek() == 'L' || peek() == 'l') {
    wide = true;
    ++position_;
  }
  if (peek() == '_' && is_digit(peek(1))) {
    ++position_;
    std::int64_t kind = 0;
    while (is_digit(peek())) {
      if (kind < 1000) kind = kind * 10 + (peek() - '0');
      ++position_;
    }
    if (kind == 4 || kind == 7) wide = true;
  }
  auto e = make_element(0, language_);
  if (overflow) {
    set_real_constant(*e, std::strtod(literal.c_str(), nullptr), kTypeReal8);
  } else if (!wide && value <= 2147483647u) {
    set_integer_constant(*e, static_cast<std::int64_t>(value), kTypeInteger4);
  } else if (value <= 9223372036854775808ull) {
    set_integer_constant(*e, static_cast<std::int64_t>(value), kTypeInteger8);
  } else {
    set_integer_constant(*e, static_cast<std::int64_t>(value), kTypeUnsigned8);
  }
  return operand_token(std::move(e), start);
}

Token Tokenizer::fortran_string() {
  std::size_t start = position_++;
  std::string value;
  while (position_ < text_.size()) {
    if (text_[position_] == '\'') {
      if (peek(1) == '\'') {
        value += '\'';
        position_ += 2;
        continue;
      }
      ++position_;
      break;
    }
    value += text_[position_++];
  }
  auto e = make_element(0, language_);
  set_constant(*e, value.data(), static_cast<std::int64_t>(value.size()), kTypeCharacter);
  return operand_token(std::move(e), start);
}

Token Tokenizer::c_character() {
  std::size_t start = position_++;
  std::uint32_t value = 0;
  while (position_ < text_.size() && text_[position_] != '\'') {
    char c = text_[position_++];
    if (c == '\\' && position_ < text_.size()) {
      c = text_[position_++];
      switch (c) {
        case 'n': c = '\n'; break;
        case 'r': c = '\r'; break;
        case 't': c = '\t'; break;
        default: break;  // \" \' \\ and any other character stand for themselves
      }
    }
    value = value * 256 + static_cast<unsigned char>(c);
  }
  if (position_ < text_.size()) ++position_;
  auto e = make_element(0, kLangC);
  set_integer_constant(*e, value, kTypeUnsigned4);
  return operand_token(std::move(e), start);
}

Token Tokenizer::identifier() {
  std::size_t start = position_;
  std::string name;
  while (position_ < text_.size()) {
    char c = text_[position_];
    if (is_letter(c) || is_digit(c) || c == '_' || c == '@' || c == '$' || (c == '!' && language_ == kLangFortran95)) {
      name += c;
      ++position_;
    } else if (c == ':' && peek(1) == ':') {
      name += "::";
      position_ += 2;
    } else {
      break;
    }
  }
  if (language_ != kLangC)
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (peek() == '(') {
    std::int32_t code = -1;
    if (equal_ignoring_case_prefix(name, 0, "leng") && name.size() == 4) code = kOpLength;
    if (equal_ignoring_case_prefix(name, 0, "strlen") && name.size() == 6) code = kOpLength;
    if (equal_ignoring_case_prefix(name, 0, "loc") && name.size() == 3) code = kOpAddress;
    if (code >= 0) {
      ++position_;
      Token t;
      t.kind = Token::kOperator;
      t.code = code;
      t.start = start;
      return t;
    }
  }
  Token t;
  t.kind = Token::kName;
  t.name = std::move(name);
  t.start = start;
  return t;
}

}  // namespace vantor
