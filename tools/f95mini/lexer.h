// Free-form source to statements of tokens. Continuation lines are joined, comments and
// blank lines dropped, ';' splits statements, names are folded to lower case and the
// dotted operators (.EQ., .AND., ...) become their symbolic spellings.
#pragma once

#include <string>
#include <vector>

#include "f95mini/diagnostics.h"

namespace f95mini {

enum class TokenKind { kName, kInteger, kReal, kString, kLogical, kOperator, kEnd };

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string text;  // name (lower case), digits of a number, string value, operator spelling
  std::string kind_suffix;  // "_8" kinds of literals, without the underscore ("" when absent)
  bool double_exponent = false;  // a real literal written with a D exponent
};

struct Statement {
  SourcePos pos;
  std::vector<Token> tokens;  // always closed by one kEnd token
};

std::vector<Statement> lex_source(const std::string& file_name, const std::string& text);

}  // namespace f95mini
