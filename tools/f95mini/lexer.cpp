#include "f95mini/lexer.h"

#include <cctype>
#include <cstring>

namespace f95mini {
namespace {

struct LogicalLine {
  int line = 0;
  std::string text;
};

bool is_blank(const std::string& s) {
  for (char c : s)
    if (!std::isspace(static_cast<unsigned char>(c))) return false;
  return true;
}

// Joins '&' continuations and strips '!' comments, keeping quoted text intact. A string
// may run across a continuation; the next line then resumes after its leading '&'.
std::vector<LogicalLine> join_lines(const std::string& file_name, const std::string& text) {
  std::vector<LogicalLine> out;
  std::vector<std::string> raw;
  {
    std::string cur;
    for (char c : text) {
      if (c == '\n') {
        raw.push_back(cur);
        cur.clear();
      } else if (c != '\r') {
        cur += c;
      }
    }
    if (!cur.empty()) raw.push_back(cur);
  }
  LogicalLine pending;
  bool continuing = false;
  char quote = 0;  // open quote carried over a continuation
  for (size_t n = 0; n < raw.size(); ++n) {
    const std::string& line = raw[n];
    size_t i = 0;
    if (continuing) {
      size_t j = line.find_first_not_of(" \t");
      if (j != std::string::npos && line[j] == '&') i = j + 1;
      else if (quote) i = 0;
      if (j == std::string::npos || line[j] == '!') {
        if (quote) fail({file_name, static_cast<int>(n + 1)}, "unterminated character constant");
        continue;  // comment lines may sit between continued lines
      }
    } else {
      pending = LogicalLine{static_cast<int>(n + 1), {}};
    }
    std::string body;
    for (; i < line.size(); ++i) {
      char c = line[i];
      if (quote) {
        body += c;
        if (c == quote) quote = 0;  // a doubled quote reopens at once on the next char
        continue;
      }
      if (c == '!') break;
      if (c == '\'' || c == '"') quote = c;
      if (c == '\t') c = ' ';
      body += c;
    }
    // A trailing '&' (outside quotes, or inside when the string continues) continues.
    size_t end = body.find_last_not_of(' ');
    bool cont = end != std::string::npos && body[end] == '&';
    if (cont) body.erase(end);
    else if (quote) fail({file_name, static_cast<int>(n + 1)}, "unterminated character constant");
    pending.text += body;
    continuing = cont;
    if (!cont) {
      if (!is_blank(pending.text)) out.push_back(pending);
    }
  }
  if (continuing) fail({file_name, static_cast<int>(raw.size())}, "continuation at end of file");
  return out;
}

const char* dotted_operator(const std::string& word) {
  static const struct { const char* word; const char* op; } table[] = {
      {"eq", "=="}, {"ne", "/="}, {"lt", "<"}, {"le", "<="}, {"gt", ">"}, {"ge", ">="},
      {"and", ".and."}, {"or", ".or."}, {"not", ".not."}, {"eqv", ".eqv."}, {"neqv", ".neqv."},
      {"true", ".true."}, {"false", ".false."},
  };
  for (const auto& e : table)
    if (word == e.word) return e.op;
  return nullptr;
}

// If text[i] starts a dotted operator (".eq." ...), returns its length, else 0.
size_t dotted_length(const std::string& t, size_t i, std::string* word) {
  if (t[i] != '.') return 0;
  size_t j = i + 1;
  std::string w;
  while (j < t.size() && std::isalpha(static_cast<unsigned char>(t[j]))) w += static_cast<char>(std::tolower(t[j++]));
  if (j >= t.size() || t[j] != '.' || !dotted_operator(w)) return 0;
  *word = w;
  return j + 1 - i;
}

std::string read_kind_suffix(const std::string& t, size_t& i) {
  if (i + 1 < t.size() && t[i] == '_' && std::isalnum(static_cast<unsigned char>(t[i + 1]))) {
    ++i;
    std::string k;
    while (i < t.size() && (std::isalnum(static_cast<unsigned char>(t[i])) || t[i] == '_'))
      k += static_cast<char>(std::tolower(t[i++]));
    return k;
  }
  return {};
}

void tokenize(const SourcePos& pos, const std::string& t, std::vector<Statement>& out) {
  Statement st{pos, {}};
  auto flush = [&]() {
    if (!st.tokens.empty()) {
      st.tokens.push_back(Token{});
      out.push_back(std::move(st));
    }
    st = Statement{pos, {}};
  };
  size_t i = 0;
  while (i < t.size()) {
    char c = t[i];
    if (c == ' ') { ++i; continue; }
    if (c == ';') { flush(); ++i; continue; }
    Token tok;
    if (std::isalpha(static_cast<unsigned char>(c))) {
      tok.kind = TokenKind::kName;
      while (i < t.size() && (std::isalnum(static_cast<unsigned char>(t[i])) || t[i] == '_'))
        tok.text += static_cast<char>(std::tolower(t[i++]));
    } else if (std::isdigit(static_cast<unsigned char>(c)) ||
               (c == '.' && i + 1 < t.size() && std::isdigit(static_cast<unsigned char>(t[i + 1])))) {
      tok.kind = TokenKind::kInteger;
      while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) tok.text += t[i++];
      std::string word;
      if (i < t.size() && t[i] == '.' && !dotted_length(t, i, &word)) {
        tok.kind = TokenKind::kReal;
        tok.text += t[i++];
        while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) tok.text += t[i++];
      }
      if (i < t.size() && std::strchr("eEdD", t[i]) && i + 1 < t.size() &&
          (std::isdigit(static_cast<unsigned char>(t[i + 1])) ||
           ((t[i + 1] == '+' || t[i + 1] == '-') && i + 2 < t.size() &&
            std::isdigit(static_cast<unsigned char>(t[i + 2]))))) {
        tok.kind = TokenKind::kReal;
        tok.double_exponent = t[i] == 'd' || t[i] == 'D';
        tok.text += 'e';
        ++i;
        if (t[i] == '+' || t[i] == '-') tok.text += t[i++];
        while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) tok.text += t[i++];
      }
      tok.kind_suffix = read_kind_suffix(t, i);
    } else if (c == '\'' || c == '"') {
      tok.kind = TokenKind::kString;
      ++i;
      for (;;) {
        if (i >= t.size()) fail(pos, "unterminated character constant");
        if (t[i] == c) {
          if (i + 1 < t.size() && t[i + 1] == c) {
            tok.text += c;
            i += 2;
            continue;
          }
          ++i;
          break;
        }
        tok.text += t[i++];
      }
    } else {
      std::string word;
      size_t n = dotted_length(t, i, &word);
      tok.kind = TokenKind::kOperator;
      if (n) {
        tok.text = dotted_operator(word);
        i += n;
        if (word == "true" || word == "false") {
          tok.kind = TokenKind::kLogical;
          tok.kind_suffix = read_kind_suffix(t, i);
        }
      } else {
        static const char* two[] = {"**", "//", "==", "/=", "<=", ">=", "=>", "::", "(/", "/)"};
        tok.text = std::string(1, c);
        for (const char* op : two) {
          if (t.compare(i, 2, op) == 0) {
            // "(/" only opens an array constructor; "a(/b)" never occurs in the subset.
            tok.text = op;
            break;
          }
        }
        if (!std::strchr("+-*/=<>(),:%", c) && tok.text.size() == 1)
          fail(pos, std::string("unexpected character '") + c + "'");
        i += tok.text.size();
      }
    }
    st.tokens.push_back(std::move(tok));
  }
  flush();
}

}  // namespace

std::vector<Statement> lex_source(const std::string& file_name, const std::string& text) {
  std::vector<Statement> out;
  for (const LogicalLine& line : join_lines(file_name, text)) tokenize({file_name, line.line}, line.text, out);
  return out;
}

}  // namespace f95mini
