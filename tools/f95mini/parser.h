// Statements to program units: declarations, executable constructs and CONTAINS.
#pragma once

#include <string>

#include "f95mini/ast.h"
#include "f95mini/lexer.h"

namespace f95mini {

SourceFile parse_source(const std::string& path, const std::string& text);

// One expression from a token list (used by tests and for kind expressions).
ExprPtr parse_expression_text(const std::string& text);

}  // namespace f95mini
