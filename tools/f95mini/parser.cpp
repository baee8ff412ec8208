#include "f95mini/parser.h"

#include <set>

namespace f95mini {
namespace {

class TokenCursor {
 public:
  explicit TokenCursor(const Statement& st) : st_(st) {}
  const Token& peek(size_t ahead = 0) const {
    size_t i = pos_ + ahead;
    return i < st_.tokens.size() ? st_.tokens[i] : st_.tokens.back();
  }
  bool at_end() const { return peek().kind == TokenKind::kEnd; }
  const Token& next() {
    const Token& t = peek();
    if (pos_ < st_.tokens.size() - 1) ++pos_;
    return t;
  }
  bool is_op(const char* op, size_t ahead = 0) const {
    return peek(ahead).kind == TokenKind::kOperator && peek(ahead).text == op;
  }
  bool is_name(const char* name, size_t ahead = 0) const {
    return peek(ahead).kind == TokenKind::kName && peek(ahead).text == name;
  }
  bool accept_op(const char* op) {
    if (!is_op(op)) return false;
    next();
    return true;
  }
  bool accept_name(const char* name) {
    if (!is_name(name)) return false;
    next();
    return true;
  }
  void expect_op(const char* op) {
    if (!accept_op(op)) error(std::string("expected '") + op + "'" + found());
  }
  std::string expect_name(const char* what = "a name") {
    if (peek().kind != TokenKind::kName) error(std::string("expected ") + what + found());
    return next().text;
  }
  void expect_end() {
    if (!at_end()) error("unexpected '" + describe(peek()) + "' at end of statement");
  }
  [[noreturn]] void error(const std::string& message) const { fail(st_.pos, message); }
  const SourcePos& pos() const { return st_.pos; }
  size_t position() const { return pos_; }
  void reset(size_t p) { pos_ = p; }

  static std::string describe(const Token& t) {
    switch (t.kind) {
      case TokenKind::kString: return "'" + t.text + "'";
      case TokenKind::kEnd: return "end of statement";
      default: return t.text;
    }
  }
  std::string found() const { return ", found " + (at_end() ? std::string("end of statement") : "'" + describe(peek()) + "'"); }

 private:
  const Statement& st_;
  size_t pos_ = 0;
};

// ---- expressions ------------------------------------------------------------------

ExprPtr make_expr(ExprKind kind, const SourcePos& pos, std::string text = {}) {
  auto e = std::make_unique<Expr>();
  e->kind = kind;
  e->pos = pos;
  e->text = std::move(text);
  return e;
}

class ExprParser {
 public:
  explicit ExprParser(TokenCursor& c) : c_(c) {}

  ExprPtr expr() { return equivalence(); }

  // An argument list after '(' has been taken; fills args/keywords, takes ')'.
  void arguments(Expr& apply, const char* close = ")") {
    if (c_.accept_op(close)) return;
    do {
      std::string keyword;
      if (c_.peek().kind == TokenKind::kName && c_.is_op("=", 1)) {
        keyword = c_.next().text;
        c_.next();
      }
      apply.keywords.push_back(keyword);
      apply.args.push_back(range_or_expr());
    } while (c_.accept_op(","));
    c_.expect_op(close);
  }

  ExprPtr designator_or_name() { return postfix(name_primary()); }

 private:
  ExprPtr range_or_expr() {
    SourcePos pos = c_.pos();
    ExprPtr lo;
    if (!c_.is_op(":")) lo = expr();
    if (!c_.accept_op(":")) return lo;
    auto r = make_expr(ExprKind::kRange, pos);
    r->args.push_back(std::move(lo));
    ExprPtr hi;
    if (!c_.is_op(",") && !c_.is_op(")")) hi = expr();
    r->args.push_back(std::move(hi));
    return r;
  }

  ExprPtr binary(const std::string& op, ExprPtr l, ExprPtr r) {
    auto e = make_expr(ExprKind::kBinary, c_.pos(), op);
    e->args.push_back(std::move(l));
    e->args.push_back(std::move(r));
    return e;
  }

  ExprPtr equivalence() {
    ExprPtr l = disjunction();
    while (c_.is_op(".eqv.") || c_.is_op(".neqv.")) {
      std::string op = c_.next().text;
      l = binary(op, std::move(l), disjunction());
    }
    return l;
  }
  ExprPtr disjunction() {
    ExprPtr l = conjunction();
    while (c_.accept_op(".or.")) l = binary(".or.", std::move(l), conjunction());
    return l;
  }
  ExprPtr conjunction() {
    ExprPtr l = negation();
    while (c_.accept_op(".and.")) l = binary(".and.", std::move(l), negation());
    return l;
  }
  ExprPtr negation() {
    if (c_.accept_op(".not.")) {
      auto e = make_expr(ExprKind::kUnary, c_.pos(), ".not.");
      e->args.push_back(negation());
      return e;
    }
    return comparison();
  }
  ExprPtr comparison() {
    ExprPtr l = concatenation();
    static const char* ops[] = {"==", "/=", "<", "<=", ">", ">="};
    for (const char* op : ops) {
      if (c_.is_op(op)) {
        c_.next();
        return binary(op, std::move(l), concatenation());
      }
    }
    return l;
  }
  ExprPtr concatenation() {
    ExprPtr l = additive();
    while (c_.accept_op("//")) l = binary("//", std::move(l), additive());
    return l;
  }
  ExprPtr additive() {
    ExprPtr l;
    if (c_.is_op("-") || c_.is_op("+")) {
      std::string op = c_.next().text;
      auto u = make_expr(ExprKind::kUnary, c_.pos(), op);
      u->args.push_back(multiplicative());
      l = std::move(u);
    } else {
      l = multiplicative();
    }
    while (c_.is_op("+") || c_.is_op("-")) {
      std::string op = c_.next().text;
      l = binary(op, std::move(l), multiplicative());
    }
    return l;
  }
  ExprPtr multiplicative() {
    ExprPtr l = power();
    while (c_.is_op("*") || c_.is_op("/")) {
      std::string op = c_.next().text;
      l = binary(op, std::move(l), power());
    }
    return l;
  }
  ExprPtr power() {
    ExprPtr l = primary();
    if (c_.accept_op("**")) {
      // Right-associative; a signed exponent (2.0**-1) is accepted as most compilers do.
      ExprPtr r;
      if (c_.is_op("-") || c_.is_op("+")) {
        std::string op = c_.next().text;
        r = make_expr(ExprKind::kUnary, c_.pos(), op);
        r->args.push_back(power());
      } else {
        r = power();
      }
      return binary("**", std::move(l), std::move(r));
    }
    return l;
  }

  ExprPtr primary() {
    const Token& t = c_.peek();
    SourcePos pos = c_.pos();
    switch (t.kind) {
      case TokenKind::kInteger:
      case TokenKind::kReal: {
        auto e = make_expr(t.kind == TokenKind::kInteger ? ExprKind::kInteger : ExprKind::kReal, pos, t.text);
        e->kind_suffix = t.kind_suffix;
        e->double_exponent = t.double_exponent;
        c_.next();
        return e;
      }
      case TokenKind::kString: {
        auto e = make_expr(ExprKind::kString, pos, t.text);
        c_.next();
        // A substring of a constant: 'abc'(2:3)
        return postfix(std::move(e));
      }
      case TokenKind::kLogical: {
        auto e = make_expr(ExprKind::kLogical, pos, t.text);
        e->kind_suffix = t.kind_suffix;
        c_.next();
        return e;
      }
      case TokenKind::kName: return designator_or_name();
      case TokenKind::kOperator:
        if (t.text == "(") {
          c_.next();
          ExprPtr first = expr();
          if (c_.accept_op(",")) {
            auto e = make_expr(ExprKind::kComplex, pos);
            e->args.push_back(std::move(first));
            e->args.push_back(expr());
            c_.expect_op(")");
            return e;
          }
          c_.expect_op(")");
          // Parentheses make a value, never a designator: keep them visible so that
          // (x) is passed as a copy.
          auto e = make_expr(ExprKind::kUnary, pos, "()");
          e->args.push_back(std::move(first));
          return e;
        }
        if (t.text == "(/") {
          c_.next();
          auto e = make_expr(ExprKind::kArrayConstructor, pos);
          if (!c_.is_op("/)")) {
            do e->args.push_back(expr());
            while (c_.accept_op(","));
          }
          c_.expect_op("/)");
          return e;
        }
        if (t.text == "-" || t.text == "+") {
          std::string op = c_.next().text;
          auto e = make_expr(ExprKind::kUnary, pos, op);
          e->args.push_back(power());
          return e;
        }
        break;
      default: break;
    }
    c_.error("expected an expression" + c_.found());
  }

  ExprPtr name_primary() {
    SourcePos pos = c_.pos();
    return make_expr(ExprKind::kName, pos, c_.expect_name());
  }

  ExprPtr postfix(ExprPtr e) {
    for (;;) {
      if (c_.is_op("(")) {
        c_.next();
        auto a = make_expr(ExprKind::kApply, e->pos);
        a->base = std::move(e);
        arguments(*a);
        e = std::move(a);
      } else if (c_.is_op("%")) {
        c_.next();
        auto m = make_expr(ExprKind::kComponent, e->pos, c_.expect_name("a component name"));
        m->base = std::move(e);
        e = std::move(m);
      } else {
        return e;
      }
    }
  }

  TokenCursor& c_;
};

// ---- statements --------------------------------------------------------------------

bool is_type_keyword(const std::string& w) {
  return w == "integer" || w == "real" || w == "complex" || w == "logical" || w == "character" ||
         w == "double" || w == "doubleprecision" || w == "type";
}

class Parser {
 public:
  Parser(const std::string& path, std::vector<Statement> statements) : path_(path), sts_(std::move(statements)) {}

  SourceFile parse() {
    SourceFile file;
    file.path = path_;
    while (i_ < sts_.size()) file.units.push_back(unit(nullptr));
    return file;
  }

 private:
  const Statement& cur() const { return sts_[i_]; }
  bool done() const { return i_ >= sts_.size(); }

  // Leading words that begin a statement, with END forms folded: "end do" and "enddo".
  static std::string head(const Statement& st, size_t skip = 0) {
    const auto& t = st.tokens;
    if (t.size() <= skip || t[skip].kind != TokenKind::kName) return {};
    return t[skip].text;
  }
  // For END statements: returns the word after END ("" for a bare END), or nullopt.
  static bool end_of(const Statement& st, const char* what) {
    const auto& t = st.tokens;
    if (t[0].kind != TokenKind::kName) return false;
    std::string w = t[0].text;
    if (w == std::string("end") + what) return true;
    return w == "end" && t.size() > 1 && t[1].kind == TokenKind::kName && t[1].text == what;
  }
  static bool is_bare_end(const Statement& st) {
    return st.tokens[0].kind == TokenKind::kName && st.tokens[0].text == "end" &&
           st.tokens[1].kind == TokenKind::kEnd;
  }

  std::unique_ptr<Unit> unit(const Unit* host) {
    auto u = std::make_unique<Unit>();
    const Statement& st = cur();
    TokenCursor c(st);
    u->pos = st.pos;
    bool has_header = true;
    TypeSpec prefix;
    bool recursive = false;
    // Prefixes: RECURSIVE and a type, in either order.
    for (;;) {
      if (c.accept_name("recursive")) { recursive = true; continue; }
      if (prefix.base == TypeSpec::kNone && c.peek().kind == TokenKind::kName && is_type_keyword(c.peek().text) &&
          !(c.is_name("type") && !c.is_op("(", 1))) {
        size_t save = c.position();
        TypeSpec t = type_spec(c);
        if (c.is_name("function") || c.is_name("recursive")) { prefix = std::move(t); continue; }
        c.reset(save);
      }
      break;
    }
    if (c.accept_name("program")) {
      u->kind = Unit::kProgram;
      u->name = c.expect_name("a program name");
    } else if (c.accept_name("subroutine")) {
      u->kind = Unit::kSubroutine;
      u->name = c.expect_name("a subroutine name");
      if (c.accept_op("(")) dummy_list(c, *u);
    } else if (c.accept_name("function")) {
      u->kind = Unit::kFunction;
      u->name = c.expect_name("a function name");
      c.expect_op("(");
      dummy_list(c, *u);
      if (c.accept_name("result")) {
        c.expect_op("(");
        u->result = c.expect_name();
        c.expect_op(")");
      }
    } else if (!recursive && prefix.base == TypeSpec::kNone && c.accept_name("module")) {
      if (host) c.error("a MODULE cannot be contained in another unit");
      u->kind = Unit::kModule;
      u->name = c.expect_name("a module name");
    } else if (!host && !recursive && prefix.base == TypeSpec::kNone) {
      u->kind = Unit::kProgram;
      u->name = "main";
      has_header = false;
    } else {
      c.error("expected SUBROUTINE or FUNCTION" + c.found());
    }
    if (host && u->kind == Unit::kProgram) fail(st.pos, "unexpected statement where a CONTAINS procedure must begin");
    u->recursive = recursive;
    u->prefix_type = std::move(prefix);
    if (has_header) {
      c.expect_end();
      ++i_;
    }
    specification_part(*u);
    if (u->kind != Unit::kModule) u->body = block(*u, {"contains"}, nullptr);
    if (!done() && head(cur()) == "contains") {
      if (host) fail(cur().pos, "CONTAINS inside an internal procedure is not supported");
      ++i_;
      while (!done() && !is_unit_end(cur())) u->contains.push_back(unit(u.get()));
    }
    if (done()) fail({path_, sts_.empty() ? 1 : sts_.back().pos.line}, "missing END for " + u->name);
    end_unit(*u);
    return u;
  }

  bool is_unit_end(const Statement& st) const {
    return is_bare_end(st) || end_of(st, "program") || end_of(st, "subroutine") || end_of(st, "function") ||
           end_of(st, "module");
  }

  void end_unit(Unit& u) {
    const Statement& st = cur();
    if (!is_unit_end(st)) fail(st.pos, "expected END of " + u.name);
    static const char* kind_words[] = {"program", "subroutine", "function", "module"};
    const char* want = kind_words[u.kind];
    if (!is_bare_end(st) && !end_of(st, want))
      fail(st.pos, std::string("END ") + want + " expected to close " + u.name);
    TokenCursor c(st);
    c.next();
    if (c.peek().kind == TokenKind::kName && c.peek().text == want) c.next();
    if (c.peek().kind == TokenKind::kName) {
      std::string n = c.next().text;
      if (n != u.name) fail(st.pos, "END name '" + n + "' does not match '" + u.name + "'");
    }
    c.expect_end();
    u.end_pos = st.pos;
    ++i_;
  }

  void dummy_list(TokenCursor& c, Unit& u) {
    if (c.accept_op(")")) return;
    do {
      if (c.accept_op("*")) c.error("alternate returns are not supported");
      u.args.push_back(c.expect_name("a dummy argument name"));
    } while (c.accept_op(","));
    c.expect_op(")");
  }

  // ---- specification part ----

  bool is_spec_statement(const Statement& st) const {
    std::string w = head(st);
    if (w.empty()) return false;
    if (w == "type") {
      // TYPE(name) declares; TYPE name / TYPE :: name defines.
      return true;
    }
    if (is_type_keyword(w)) {
      // "real = 1" would be an assignment to a variable named real.
      return !(st.tokens[1].kind == TokenKind::kOperator && (st.tokens[1].text == "=" || st.tokens[1].text == "%"));
    }
    static const std::set<std::string> words = {"implicit", "common", "data", "dimension", "save", "parameter",
                                                "external", "intrinsic", "use", "pointer", "target",
                                                "allocatable", "private", "public", "intent", "sequence"};
    if (!words.count(w)) return false;
    // Reject things like "save = 1" (an assignment to a variable named save).
    return !(st.tokens[1].kind == TokenKind::kOperator && st.tokens[1].text == "=");
  }

  void specification_part(Unit& u) {
    while (!done() && is_spec_statement(cur())) {
      const Statement& st = cur();
      TokenCursor c(st);
      std::string w = head(st);
      if (w == "type" && !c.is_op("(", 1)) {
        type_definition(u);
        continue;
      }
      SpecStmt s;
      s.pos = st.pos;
      if (is_type_keyword(w)) {
        s.kind = SpecStmt::kDecl;
        s.decl = declaration(c);
      } else if (c.accept_name("implicit")) {
        if (!c.accept_name("none")) c.error("only IMPLICIT NONE is supported");
        s.kind = SpecStmt::kImplicitNone;
      } else if (c.accept_name("use")) {
        s.kind = SpecStmt::kUse;
        s.name = c.expect_name("a module name");
        if (c.accept_op(",")) {
          if (!c.accept_name("only")) c.error("expected ONLY" + c.found());
          c.expect_op(":");
          s.has_only = true;
          if (!c.at_end()) {
            do {
              std::string n = c.expect_name();
              if (c.is_op("=>")) c.error("renaming in USE is not supported");
              s.only.push_back(n);
            } while (c.accept_op(","));
          }
        }
      } else if (c.accept_name("common")) {
        s.kind = SpecStmt::kCommon;
        common(c, u, s);
        ++i_;
        continue;
      } else if (c.accept_name("data")) {
        s.kind = SpecStmt::kData;
        data(c, s);
      } else if (c.accept_name("dimension")) {
        s.kind = SpecStmt::kDimension;
        c.accept_op("::");
        s.entities = entity_list(c, false);
      } else if (c.accept_name("save")) {
        s.kind = SpecStmt::kSave;
        c.accept_op("::");
        if (!c.at_end()) s.entities = entity_list(c, false);
      } else if (c.accept_name("parameter")) {
        s.kind = SpecStmt::kParameter;
        c.expect_op("(");
        do {
          std::string n = c.expect_name();
          c.expect_op("=");
          ExprParser ep(c);
          s.params.emplace_back(n, ep.expr());
        } while (c.accept_op(","));
        c.expect_op(")");
      } else if (c.accept_name("external")) {
        s.kind = SpecStmt::kExternal;
        c.accept_op("::");
        s.entities = entity_list(c, false);
      } else if (c.accept_name("intrinsic") || c.accept_name("private") || c.accept_name("public") ||
                 c.accept_name("sequence")) {
        ++i_;  // no effect on the code or the tables
        continue;
      } else if (c.is_name("pointer") || c.is_name("target") || c.is_name("allocatable")) {
        s.kind = SpecStmt::kAttribute;
        s.attribute = c.next().text;
        c.accept_op("::");
        s.entities = entity_list(c, false);
      } else {
        c.error("'" + w + "' statements are not supported");
      }
      c.expect_end();
      u.specs.push_back(std::move(s));
      ++i_;
    }
  }

  void common(TokenCursor& c, Unit& u, SpecStmt& first) {
    // COMMON /a/ x, y /b/ z  or  COMMON x (blank)
    bool any = false;
    while (!c.at_end()) {
      SpecStmt s;
      s.kind = SpecStmt::kCommon;
      s.pos = first.pos;
      if (c.accept_op("//")) {
        s.name = "";
      } else if (c.accept_op("/")) {
        s.name = c.expect_name("a COMMON block name");
        c.expect_op("/");
      } else if (any) {
        c.error("expected '/' before a COMMON block name" + c.found());
      }
      s.entities = entity_list(c, false, true);
      u.specs.push_back(std::move(s));
      any = true;
      c.accept_op(",");
    }
    if (!any) c.error("empty COMMON statement");
  }

  void data(TokenCursor& c, SpecStmt& s) {
    ExprParser ep(c);
    do {
      SpecStmt::DataGroup g;
      do g.objects.push_back(ep.designator_or_name());
      while (c.accept_op(","));
      c.expect_op("/");
      do {
        // [repeat *] constant; a constant may be signed.
        ExprPtr first = data_constant(c);
        if (c.accept_op("*")) g.values.emplace_back(std::move(first), data_constant(c));
        else g.values.emplace_back(nullptr, std::move(first));
      } while (c.accept_op(","));
      c.expect_op("/");
      s.data.push_back(std::move(g));
    } while (c.accept_op(",") || (!c.at_end() && c.peek().kind == TokenKind::kName));
  }

  ExprPtr data_constant(TokenCursor& c) {
    SourcePos pos = c.pos();
    if (c.is_op("-") || c.is_op("+")) {
      std::string op = c.next().text;
      auto e = make_expr(ExprKind::kUnary, pos, op);
      e->args.push_back(data_constant(c));
      return e;
    }
    const Token& t = c.peek();
    if (t.kind == TokenKind::kOperator && t.text == "(") {
      ExprParser ep(c);
      return ep.expr();  // a complex constant
    }
    if (t.kind == TokenKind::kName) return make_expr(ExprKind::kName, pos, c.next().text);
    ExprKind k = t.kind == TokenKind::kInteger ? ExprKind::kInteger
                 : t.kind == TokenKind::kReal  ? ExprKind::kReal
                 : t.kind == TokenKind::kString ? ExprKind::kString
                 : t.kind == TokenKind::kLogical ? ExprKind::kLogical
                                                 : (c.error("expected a constant in DATA" + c.found()), ExprKind::kInteger);
    auto e = make_expr(k, pos, t.text);
    e->kind_suffix = t.kind_suffix;
    e->double_exponent = t.double_exponent;
    c.next();
    return e;
  }

  void type_definition(Unit& u) {
    TokenCursor c(cur());
    c.next();
    if (c.accept_op(",")) c.error("attributes on a TYPE definition are not supported");
    c.accept_op("::");
    TypeDef t;
    t.pos = cur().pos;
    t.name = c.expect_name("a type name");
    c.expect_end();
    ++i_;
    for (;;) {
      if (done()) fail(t.pos, "missing END TYPE for " + t.name);
      const Statement& st = cur();
      if (end_of(st, "type")) {
        TokenCursor e(st);
        e.next();
        e.accept_name("type");
        if (e.peek().kind == TokenKind::kName && e.next().text != t.name) e.error("END TYPE name does not match");
        e.expect_end();
        ++i_;
        break;
      }
      std::string w = head(st);
      if (w == "sequence" || w == "private" || w == "public") {
        ++i_;
        continue;
      }
      if (!is_type_keyword(w)) fail(st.pos, "expected a component declaration in TYPE " + t.name);
      TokenCursor dc(st);
      t.components.push_back(declaration(dc));
      dc.expect_end();
      ++i_;
    }
    u.types.push_back(std::move(t));
  }

  ExprPtr kind_selector(TokenCursor& c) {
    // (n) or (KIND=n) after a type keyword.
    c.expect_op("(");
    if (c.is_name("kind") && c.is_op("=", 1)) {
      c.next();
      c.next();
    }
    ExprParser ep(c);
    ExprPtr k = ep.expr();
    c.expect_op(")");
    return k;
  }

  int star_size(TokenCursor& c) {
    const Token& t = c.next();
    if (t.kind != TokenKind::kInteger) c.error("expected a size after '*'");
    return std::stoi(t.text);
  }

  TypeSpec type_spec(TokenCursor& c) {
    TypeSpec t;
    t.pos = c.pos();
    std::string w = c.expect_name();
    if (w == "integer") t.base = TypeSpec::kInteger;
    else if (w == "real") t.base = TypeSpec::kReal;
    else if (w == "complex") t.base = TypeSpec::kComplex;
    else if (w == "logical") t.base = TypeSpec::kLogical;
    else if (w == "character") t.base = TypeSpec::kCharacter;
    else if (w == "doubleprecision") t.base = TypeSpec::kDoublePrecision;
    else if (w == "double") {
      if (!c.accept_name("precision")) c.error("expected PRECISION after DOUBLE");
      t.base = TypeSpec::kDoublePrecision;
    } else if (w == "type") {
      t.base = TypeSpec::kDerived;
      c.expect_op("(");
      t.derived_name = c.expect_name("a type name");
      c.expect_op(")");
      return t;
    } else {
      c.error("expected a type");
    }
    if (t.base == TypeSpec::kCharacter) {
      if (c.accept_op("*")) {
        if (c.accept_op("(")) {
          if (c.accept_op("*")) t.len_star = true;
          else t.len = ExprParser(c).expr();
          c.expect_op(")");
        } else {
          t.len = make_expr(ExprKind::kInteger, c.pos(), std::to_string(star_size(c)));
        }
      } else if (c.accept_op("(")) {
        // (n), (LEN=n), (LEN=n, KIND=1), (*)
        do {
          bool is_kind = false;
          if (c.is_name("len") && c.is_op("=", 1)) { c.next(); c.next(); }
          else if (c.is_name("kind") && c.is_op("=", 1)) { c.next(); c.next(); is_kind = true; }
          if (is_kind) {
            t.kind = ExprParser(c).expr();
          } else if (c.accept_op("*")) {
            t.len_star = true;
          } else {
            t.len = ExprParser(c).expr();
          }
        } while (c.accept_op(","));
        c.expect_op(")");
      }
      return t;
    }
    if (t.base != TypeSpec::kDoublePrecision) {
      if (c.accept_op("*")) t.star_size = star_size(c);
      else if (c.is_op("(")) t.kind = kind_selector(c);
    }
    return t;
  }

  std::vector<DimSpec> dim_list(TokenCursor& c) {
    // After '(' ... ')'
    std::vector<DimSpec> dims;
    do {
      DimSpec d;
      ExprParser ep(c);
      if (c.accept_op(":")) {
        d.deferred = true;
      } else if (c.accept_op("*")) {
        d.assumed = true;
      } else {
        ExprPtr first = ep.expr();
        if (c.accept_op(":")) {
          d.lower = std::move(first);
          if (c.accept_op("*")) d.assumed = true;
          else if (c.is_op(",") || c.is_op(")")) d.deferred = true;  // (lo:) assumed shape
          else d.upper = ep.expr();
        } else {
          d.upper = std::move(first);
        }
      }
      dims.push_back(std::move(d));
    } while (c.accept_op(","));
    c.expect_op(")");
    if (dims.size() > 7) c.error("an array has at most 7 dimensions");
    return dims;
  }

  std::vector<EntityDecl> entity_list(TokenCursor& c, bool allow_init, bool in_common = false) {
    std::vector<EntityDecl> list;
    do {
      EntityDecl e;
      e.pos = c.pos();
      e.name = c.expect_name("a variable name");
      if (c.accept_op("(")) {
        e.dims = dim_list(c);
        e.has_dims = true;
      }
      if (allow_init && c.accept_op("*")) {
        if (c.accept_op("(")) {
          if (c.accept_op("*")) e.char_len_star = true;
          else e.char_len = ExprParser(c).expr();
          c.expect_op(")");
        } else {
          e.char_len = make_expr(ExprKind::kInteger, c.pos(), std::to_string(star_size(c)));
        }
      }
      if (allow_init && c.accept_op("=")) {
        e.init = ExprParser(c).expr();
      } else if (allow_init && c.accept_op("=>")) {
        ExprParser ep(c);
        ExprPtr n = ep.expr();
        if (n->kind != ExprKind::kApply || n->base->text != "null" || !n->args.empty())
          c.error("a pointer can only be initialised with NULL()");
        e.pointer_init = true;
      }
      list.push_back(std::move(e));
      // In COMMON a '/' starts the next block.
      if (in_common && c.is_op("/")) break;
      if (in_common && c.is_op("//")) break;
    } while (c.accept_op(","));
    return list;
  }

  DeclStmt declaration(TokenCursor& c) {
    DeclStmt d;
    d.pos = c.pos();
    d.type = type_spec(c);
    while (c.accept_op(",")) {
      std::string a = c.expect_name("an attribute");
      if (a == "parameter") d.parameter = true;
      else if (a == "save") d.save = true;
      else if (a == "pointer") d.pointer = true;
      else if (a == "target") d.target = true;
      else if (a == "allocatable") d.allocatable = true;
      else if (a == "external") d.external = true;
      else if (a == "intrinsic") d.intrinsic = true;
      else if (a == "public" || a == "private") {}
      else if (a == "dimension") {
        c.expect_op("(");
        d.dims = dim_list(c);
        d.has_dims = true;
      } else if (a == "intent") {
        c.expect_op("(");
        d.intent = c.expect_name("an intent");
        if (d.intent == "in" && c.is_name("out")) { c.next(); d.intent = "inout"; }
        if (d.intent != "in" && d.intent != "out" && d.intent != "inout") c.error("unknown intent '" + d.intent + "'");
        c.expect_op(")");
      } else {
        c.error("attribute '" + a + "' is not supported");
      }
    }
    c.accept_op("::");
    d.entities = entity_list(c, true);
    return d;
  }

  // ---- executable part ----

  // Reads statements until one whose head is in `stops` (or a unit end); returns the block.
  Block block(Unit& u, std::set<std::string> stops, bool* stopped_by_end) {
    Block b;
    (void)stopped_by_end;
    while (!done()) {
      const Statement& st = cur();
      if (is_unit_end(st)) break;
      std::string w = head(st);
      if (stops.count(w)) break;
      if (stops.count("end do") && end_of(st, "do")) break;
      if (stops.count("end if") && (end_of(st, "if"))) break;
      if (stops.count("else") && (w == "else" || w == "elseif")) break;
      if (is_spec_statement(st) && !(w == "type" && false))
        fail(st.pos, "declaration after the first executable statement");
      b.push_back(statement(u));
    }
    return b;
  }

  StmtPtr make_stmt(StmtKind k, const SourcePos& pos) {
    auto s = std::make_unique<Stmt>();
    s->kind = k;
    s->pos = pos;
    return s;
  }

  static bool has_top_level(const Statement& st, const char* op) {
    int depth = 0;
    for (const Token& t : st.tokens) {
      if (t.kind != TokenKind::kOperator) continue;
      if (t.text == "(" || t.text == "(/") ++depth;
      else if (t.text == ")" || t.text == "/)") --depth;
      else if (depth == 0 && t.text == op) return true;
    }
    return false;
  }

  StmtPtr statement(Unit& u) {
    const Statement& st = cur();
    TokenCursor c(st);
    std::string construct;
    if (c.peek().kind == TokenKind::kName && c.is_op(":", 1) && (c.is_name("do", 2) || c.is_name("if", 2))) {
      construct = c.next().text;
      c.next();
    }
    StmtPtr s = simple_or_construct(u, c, construct);
    return s;
  }

  StmtPtr simple_or_construct(Unit& u, TokenCursor& c, const std::string& construct) {
    const Statement& st = cur();
    std::string w = c.peek().kind == TokenKind::kName ? c.peek().text : "";
    if (w == "if" && c.is_op("(", 1)) return if_statement(u, c, construct);
    if (w == "do" && !c.is_op("=", 1)) return do_statement(u, c, construct);
    if (!construct.empty()) c.error("a construct name is only allowed on IF and DO");
    StmtPtr s = simple(c, st);
    ++i_;
    return s;
  }

  // A statement that fits on one line (also the action of a logical IF).
  StmtPtr simple(TokenCursor& c, const Statement& st) {
    std::string w = c.peek().kind == TokenKind::kName ? c.peek().text : "";
    bool keyword_form = !(c.is_op("=", 1) || c.is_op("=>", 1) || c.is_op("%", 1));
    ExprParser ep(c);
    if (keyword_form) {
      if (w == "call") {
        c.next();
        auto s = make_stmt(StmtKind::kCall, st.pos);
        s->name = c.expect_name("a subroutine name");
        if (c.accept_op("(")) {
          Expr tmp;
          ep.arguments(tmp);
          s->exprs = std::move(tmp.args);
          s->keywords = std::move(tmp.keywords);
          for (const auto& k : s->keywords)
            if (!k.empty()) c.error("keyword arguments are not supported");
        }
        c.expect_end();
        return s;
      }
      if (w == "print" || w == "write") {
        c.next();
        auto s = make_stmt(StmtKind::kPrint, st.pos);
        if (w == "print") {
          if (!c.accept_op("*")) c.error("only list-directed PRINT * is supported");
        } else {
          c.expect_op("(");
          if (c.is_name("unit") && c.is_op("=", 1)) { c.next(); c.next(); }
          if (!c.accept_op("*")) {
            const Token& t = c.next();
            if (t.kind != TokenKind::kInteger || t.text != "6") c.error("only WRITE(*,*) and WRITE(6,*) are supported");
          }
          c.expect_op(",");
          if (c.is_name("fmt") && c.is_op("=", 1)) { c.next(); c.next(); }
          if (!c.accept_op("*")) c.error("only list-directed WRITE(*,*) is supported");
          c.expect_op(")");
        }
        if (w == "print") {
          if (c.accept_op(",")) {
            do s->exprs.push_back(ep.expr());
            while (c.accept_op(","));
          }
        } else if (!c.at_end()) {
          c.accept_op(",");
          do s->exprs.push_back(ep.expr());
          while (c.accept_op(","));
        }
        c.expect_end();
        return s;
      }
      if (w == "stop") {
        c.next();
        auto s = make_stmt(StmtKind::kStop, st.pos);
        if (!c.at_end()) s->exprs.push_back(ep.expr());
        c.expect_end();
        return s;
      }
      if (w == "return" || w == "continue") {
        c.next();
        c.expect_end();
        return make_stmt(w == "return" ? StmtKind::kReturn : StmtKind::kContinue, st.pos);
      }
      if (w == "exit" || w == "cycle") {
        c.next();
        auto s = make_stmt(w == "exit" ? StmtKind::kExit : StmtKind::kCycle, st.pos);
        if (!c.at_end()) s->name = c.expect_name("a construct name");
        c.expect_end();
        return s;
      }
      if (w == "allocate" || w == "deallocate" || w == "nullify") {
        c.next();
        auto s = make_stmt(w == "allocate" ? StmtKind::kAllocate : w == "deallocate" ? StmtKind::kDeallocate
                                                                                      : StmtKind::kNullify,
                           st.pos);
        c.expect_op("(");
        do {
          if (c.peek().kind == TokenKind::kName && c.is_op("=", 1))
            c.error("STAT= and other keywords are not supported in " + w);
          s->exprs.push_back(ep.designator_or_name());
        } while (c.accept_op(","));
        c.expect_op(")");
        c.expect_end();
        return s;
      }
      if (w == "goto" || (w == "go" && c.is_name("to", 1))) c.error("GO TO is not supported");
      if (w == "read") c.error("READ is not supported");
      if (w == "select" || w == "where" || w == "forall") c.error("'" + w + "' is not supported");
    }
    if (c.peek().kind == TokenKind::kInteger) c.error("statement labels are not supported");
    if (has_top_level(st, "=>")) {
      auto s = make_stmt(StmtKind::kPointerAssign, st.pos);
      s->exprs.push_back(ep.designator_or_name());
      c.expect_op("=>");
      s->exprs.push_back(ep.expr());
      c.expect_end();
      return s;
    }
    if (c.peek().kind == TokenKind::kName && has_top_level(st, "=")) {
      auto s = make_stmt(StmtKind::kAssign, st.pos);
      s->exprs.push_back(ep.designator_or_name());
      c.expect_op("=");
      s->exprs.push_back(ep.expr());
      c.expect_end();
      return s;
    }
    if (w.empty()) c.error("unexpected '" + TokenCursor::describe(c.peek()) + "'");
    c.error("unknown or unsupported statement '" + w + "'");
  }

  StmtPtr if_statement(Unit& u, TokenCursor& c, const std::string& construct) {
    const Statement& st = cur();
    c.next();  // if
    c.expect_op("(");
    ExprParser ep(c);
    ExprPtr cond = ep.expr();
    c.expect_op(")");
    auto s = make_stmt(StmtKind::kIf, st.pos);
    s->construct = construct;
    if (!c.accept_name("then")) {
      if (!construct.empty()) c.error("a logical IF cannot have a construct name");
      if (c.at_end()) c.error("expected THEN or a statement after IF (...)");
      std::string w = c.peek().kind == TokenKind::kName ? c.peek().text : "";
      if ((w == "if" && c.is_op("(", 1)) || (w == "do" && !c.is_op("=", 1)) || w == "else" || w == "end")
        c.error("'" + w + "' cannot follow a logical IF");
      s->logical_if = true;
      s->conds.push_back(std::move(cond));
      s->branch_pos.push_back(st.pos);
      Block b;
      b.push_back(simple(c, st));
      s->blocks.push_back(std::move(b));
      ++i_;
      return s;
    }
    c.expect_end();
    s->conds.push_back(std::move(cond));
    s->branch_pos.push_back(st.pos);
    ++i_;
    for (;;) {
      s->blocks.push_back(block(u, {"else", "elseif", "end if"}, nullptr));
      if (done() || is_unit_end(cur())) fail(st.pos, "missing END IF");
      const Statement& t = cur();
      TokenCursor tc(t);
      if (end_of(t, "if")) {
        tc.next();
        tc.accept_name("if");
        if (!tc.at_end()) {
          std::string n = tc.expect_name();
          if (n != construct) tc.error("END IF name does not match");
        }
        tc.expect_end();
        s->end_pos = t.pos;
        ++i_;
        return s;
      }
      bool else_if = false;
      if (tc.accept_name("elseif")) else_if = true;
      else {
        tc.next();  // else
        if (tc.accept_name("if")) else_if = true;
      }
      if (else_if) {
        tc.expect_op("(");
        ExprParser tp(tc);
        s->conds.push_back(tp.expr());
        tc.expect_op(")");
        if (!tc.accept_name("then")) tc.error("expected THEN after ELSE IF (...)");
      } else {
        if (!s->conds.back()) tc.error("a second ELSE in one IF");
        s->conds.push_back(nullptr);
      }
      if (tc.peek().kind == TokenKind::kName && tc.peek().text == construct) tc.next();
      tc.expect_end();
      s->branch_pos.push_back(t.pos);
      ++i_;
    }
  }

  StmtPtr do_statement(Unit& u, TokenCursor& c, const std::string& construct) {
    const Statement& st = cur();
    c.next();  // do
    StmtPtr s;
    ExprParser ep(c);
    if (c.peek().kind == TokenKind::kInteger) c.error("labelled DO loops are not supported");
    c.accept_op(",");
    if (c.at_end()) {
      s = make_stmt(StmtKind::kDoWhile, st.pos);  // DO forever: a missing condition
    } else if (c.accept_name("while")) {
      s = make_stmt(StmtKind::kDoWhile, st.pos);
      c.expect_op("(");
      s->conds.push_back(ep.expr());
      c.expect_op(")");
    } else {
      s = make_stmt(StmtKind::kDo, st.pos);
      s->name = c.expect_name("a DO variable");
      c.expect_op("=");
      s->exprs.push_back(ep.expr());
      c.expect_op(",");
      s->exprs.push_back(ep.expr());
      if (c.accept_op(",")) s->exprs.push_back(ep.expr());
    }
    c.expect_end();
    s->construct = construct;
    ++i_;
    s->blocks.push_back(block(u, {"end do"}, nullptr));
    if (done() || !end_of(cur(), "do")) fail(st.pos, "missing END DO");
    TokenCursor e(cur());
    e.next();
    e.accept_name("do");
    if (!e.at_end()) {
      std::string n = e.expect_name();
      if (n != construct) e.error("END DO name does not match");
    }
    e.expect_end();
    s->end_pos = cur().pos;
    ++i_;
    return s;
  }

  std::string path_;
  std::vector<Statement> sts_;
  size_t i_ = 0;
};

}  // namespace

SourceFile parse_source(const std::string& path, const std::string& text) {
  Parser p(path, lex_source(path, text));
  return p.parse();
}

ExprPtr parse_expression_text(const std::string& text) {
  std::vector<Statement> sts = lex_source("<expr>", text);
  if (sts.size() != 1) fail({"<expr>", 1}, "expected one expression");
  TokenCursor c(sts[0]);
  ExprParser ep(c);
  ExprPtr e = ep.expr();
  c.expect_end();
  return e;
}

}  // namespace f95mini
