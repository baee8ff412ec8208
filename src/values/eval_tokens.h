// The tokens of an expression: constants, names, operators and the section separator.
// C operators and the dotted Fortran spellings are read side by side; the scope's
// language decides how names and apostrophes are read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "values/element.h"

namespace vantor {

// Operator codes. The reader matches spellings in code order (first match wins), so the
// longer spellings come first: "&&" before "&", ">=" before ">", "**" before "*".
enum OperatorCode : std::int32_t {
  kOpOpen = 0,           // "(" grouping
  kOpClose = 1,          // ")"
  kOpAnd = 2,            // "&&" ".AND."
  kOpOr = 3,             // "||" ".OR."
  kOpGreaterEqual = 4,   // ">=" ".GE."
  kOpLessEqual = 5,      // "<=" ".LE."
  kOpNotEqual = 6,       // "!=" ".NE."
  kOpEqual = 7,          // "==" ".EQ." and "=" when allowed
  kOpPower = 8,          // "**"
  kOpArrow = 9,          // "->"
  kOpShiftRight = 10,    // ">>"
  kOpShiftLeft = 11,     // "<<"
  kOpPlus = 12,
  kOpMinus = 13,
  kOpTimes = 14,
  kOpDivide = 15,
  kOpRemainder = 16,     // "%"; component selection in the Fortran dialects 3 and 4
  kOpBitAnd = 17,
  kOpBitOr = 18,
  kOpBitXor = 19,
  kOpBitNot = 20,        // "~" unary
  kOpNot = 21,           // "!" ".NOT." unary
  kOpSubscriptOpen = 22, // "["
  kOpSubscriptClose = 23,// "]"
  kOpGreater = 24,       // ">" ".GT."
  kOpLess = 25,          // "<" ".LT."
  kOpDereference = 26,   // unary "*"
  kOpNegate = 27,        // unary "-"
  kOpAddressOf = 28,     // unary "&"
  kOpSubscript = 29,     // "(" or "[" after an operand
  kOpComponent = 30,     // "." (and "%" in the Fortran dialects)
  kOpComma = 31,
  kOpTrue = 32,          // ".TRUE."
  kOpFalse = 33,         // ".FALSE."
  kOpLength = 34,        // leng( strlen(
  kOpAddress = 35,       // loc(
  kOpSection = 36,       // ":" between the bounds of a section, only inside brackets
  kOperatorCount = 37,
};

// Binding strength of an operator code; higher binds tighter.
std::int32_t operator_strength(std::int32_t code);
bool is_unary_operator(std::int32_t code);
bool is_intrinsic_operator(std::int32_t code);

struct Token {
  enum Kind { kEnd, kStop, kOperand, kName, kOperator, kError } kind = kEnd;
  std::unique_ptr<element> operand;  // kOperand: a constant
  std::string name;                  // kName
  std::int32_t code = 0;             // kOperator: the code; kError: the error code
  std::size_t start = 0;             // where the token began in the text
};

class Tokenizer {
 public:
  // language: 1 C, else a Fortran dialect; equals_compares: "=" reads as "==".
  Tokenizer(std::string_view text, std::int32_t language, bool equals_compares)
      : text_(text), language_(language), equals_compares_(equals_compares) {}

  Token next();
  std::size_t position() const { return position_; }

 private:
  Token number();
  Token fortran_string();
  Token c_character();
  Token identifier();
  Token operator_token();
  bool at_dotted_operator(std::size_t dot) const;
  char peek(std::size_t ahead = 0) const { return position_ + ahead < text_.size() ? text_[position_ + ahead] : '\0'; }

  std::string_view text_;
  std::size_t position_ = 0;
  std::int32_t language_;
  bool equals_compares_;
};

}  // namespace vantor
