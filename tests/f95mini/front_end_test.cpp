// The front end: free-form lines to statements, and statements to program units.
#include <gtest/gtest.h>

#include "f95mini/lexer.h"
#include "f95mini/parser.h"

namespace f95mini {
namespace {

std::vector<std::string> texts(const Statement& s) {
  std::vector<std::string> out;
  for (const auto& t : s.tokens)
    if (t.kind != TokenKind::kEnd) out.push_back(t.text);
  return out;
}

std::string compile_error(const std::string& source) {
  try {
    parse_source("bad.f95", source);
  } catch (const CompileError& e) {
    return e.what();
  }
  return "";
}

TEST(Lexer, JoinsContinuationsAndDropsCommentsOutsideStrings) {
  auto sts = lex_source("t.f95",
                        "x = 'it''s ! not a comment' // &   ! a comment\n"
                        "  ! a comment line between\n"
                        "  & 'tail'\n"
                        "s = 'split &\n"
                        "     &string'; y = 1\n");
  ASSERT_EQ(sts.size(), 3u);
  EXPECT_EQ(texts(sts[0]), (std::vector<std::string>{"x", "=", "it's ! not a comment", "//", "tail"}));
  EXPECT_EQ(sts[0].pos.line, 1);
  EXPECT_EQ(texts(sts[1]), (std::vector<std::string>{"s", "=", "split string"}));
  EXPECT_EQ(sts[2].pos.line, 4);  // the second statement of a continued line keeps its first line
}

TEST(Lexer, NumbersKindsAndDottedOperators) {
  auto sts = lex_source("t.f95", "IF (1.EQ.2 .AND. .NOT. X .ne. 1.5d0) y = 2.0_8 + 3_k + .5e-2 + 1.e3\n");
  ASSERT_EQ(sts.size(), 1u);
  const auto& t = sts[0].tokens;
  EXPECT_EQ(t[0].text, "if");
  EXPECT_EQ(t[2].kind, TokenKind::kInteger);
  EXPECT_EQ(t[3].text, "==");
  EXPECT_EQ(t[5].text, ".and.");
  EXPECT_EQ(t[6].text, ".not.");
  EXPECT_EQ(t[7].text, "x");
  EXPECT_EQ(t[8].text, "/=");
  EXPECT_EQ(t[9].kind, TokenKind::kReal);
  EXPECT_TRUE(t[9].double_exponent);
  EXPECT_EQ(t[9].text, "1.5e0");
  EXPECT_EQ(t[13].kind_suffix, "8");
  EXPECT_EQ(t[15].kind_suffix, "k");
  EXPECT_EQ(t[17].text, ".5e-2");
  EXPECT_EQ(t[19].text, "1.e3");
}

TEST(Parser, BuildsConstructsWithTheirLines) {
  SourceFile f = parse_source("p.f95",
                              "program p\n"
                              "  integer :: i, a(-1:2)\n"
                              "  outer: do i = 1, 10, 2\n"
                              "    if (i > 3) then\n"
                              "      exit outer\n"
                              "    else if (i == 2) then\n"
                              "      a(0) = i\n"
                              "    else\n"
                              "      cycle\n"
                              "    end if\n"
                              "  end do outer\n"
                              "contains\n"
                              "  subroutine s(x)\n"
                              "    real :: x\n"
                              "    if (x < 0) x = -x\n"
                              "  end subroutine\n"
                              "end program p\n");
  ASSERT_EQ(f.units.size(), 1u);
  const Unit& u = *f.units[0];
  EXPECT_EQ(u.kind, Unit::kProgram);
  EXPECT_EQ(u.end_pos.line, 17);
  ASSERT_EQ(u.body.size(), 1u);
  const Stmt& loop = *u.body[0];
  EXPECT_EQ(loop.kind, StmtKind::kDo);
  EXPECT_EQ(loop.construct, "outer");
  EXPECT_EQ(loop.exprs.size(), 3u);
  EXPECT_EQ(loop.end_pos.line, 11);
  const Stmt& branch = *loop.blocks[0][0];
  EXPECT_EQ(branch.kind, StmtKind::kIf);
  ASSERT_EQ(branch.blocks.size(), 3u);
  EXPECT_EQ(branch.conds[2], nullptr);
  EXPECT_EQ(branch.branch_pos[1].line, 6);
  EXPECT_EQ(branch.blocks[0][0]->name, "outer");
  ASSERT_EQ(u.contains.size(), 1u);
  const Unit& s = *u.contains[0];
  EXPECT_EQ(s.args, std::vector<std::string>{"x"});
  EXPECT_TRUE(s.body[0]->logical_if);
}

TEST(Parser, DeclarationsWithKindsAttributesAndBounds) {
  SourceFile f = parse_source("d.f95",
                              "subroutine d(n, v)\n"
                              "  integer(kind=8), intent(in) :: n\n"
                              "  real*8, dimension(0:n, *) :: v\n"
                              "  character(len=12) :: name, short*3\n"
                              "  real, allocatable :: w(:,:)\n"
                              "  common /blk/ x, y(3) // z\n"
                              "  data k /2*0/\n"
                              "end\n");
  const Unit& u = *f.units[0];
  ASSERT_EQ(u.specs.size(), 7u);
  const DeclStmt& n = u.specs[0].decl;
  EXPECT_EQ(n.type.base, TypeSpec::kInteger);
  EXPECT_EQ(n.intent, "in");
  const DeclStmt& v = u.specs[1].decl;
  EXPECT_EQ(v.type.star_size, 8);
  ASSERT_EQ(v.dims.size(), 2u);
  EXPECT_TRUE(v.dims[1].assumed);
  EXPECT_NE(v.dims[0].lower, nullptr);
  EXPECT_TRUE(u.specs[2].decl.entities[1].char_len != nullptr);
  EXPECT_TRUE(u.specs[3].decl.allocatable);
  EXPECT_TRUE(u.specs[3].decl.entities[0].dims[1].deferred);
  EXPECT_EQ(u.specs[4].kind, SpecStmt::kCommon);
  EXPECT_EQ(u.specs[4].name, "blk");
  EXPECT_EQ(u.specs[4].entities.size(), 2u);
  EXPECT_EQ(u.specs[5].name, "");  // blank COMMON
  EXPECT_EQ(u.specs[6].kind, SpecStmt::kData);
  EXPECT_NE(u.specs[6].data[0].values[0].first, nullptr);
}

TEST(Parser, RejectsWhatTheSubsetLacksWithFileAndLine) {
  EXPECT_EQ(compile_error("program p\n  goto 10\nend\n"), "bad.f95:2: error: GO TO is not supported");
  EXPECT_EQ(compile_error("program p\n  do i = 1, 2\n  x = 1\nend\n"), "bad.f95:2: error: missing END DO");
  EXPECT_EQ(compile_error("program p\n  x = 1\n  integer :: k\nend\n"),
            "bad.f95:3: error: declaration after the first executable statement");
  EXPECT_EQ(compile_error("subroutine s\nend function s\n"), "bad.f95:2: error: END subroutine expected to close s");
  EXPECT_EQ(compile_error("program p\n  x = (1 + \nend\n"), "bad.f95:2: error: expected an expression, found end of statement");
  EXPECT_EQ(compile_error("program p\n  x = 1 $ 2\nend\n"), "bad.f95:2: error: unexpected character '$'");
  EXPECT_EQ(compile_error("x = 1\ny = 'abc\n"), "bad.f95:2: error: unterminated character constant");
}

TEST(Parser, ExpressionPrecedence) {
  ExprPtr e = parse_expression_text("-a**2 + b*c .gt. d .and. .not. e .or. f");
  // ((((-(a**2)) + (b*c)) > d) .and. (.not. e)) .or. f
  ASSERT_EQ(e->kind, ExprKind::kBinary);
  EXPECT_EQ(e->text, ".or.");
  const Expr& conj = *e->args[0];
  EXPECT_EQ(conj.text, ".and.");
  const Expr& cmp = *conj.args[0];
  EXPECT_EQ(cmp.text, ">");
  const Expr& sum = *cmp.args[0];
  EXPECT_EQ(sum.text, "+");
  EXPECT_EQ(sum.args[0]->kind, ExprKind::kUnary);
  EXPECT_EQ(sum.args[0]->args[0]->text, "**");
  ExprPtr p = parse_expression_text("2**3**2");
  EXPECT_EQ(p->args[1]->text, "**");  // right-associative
  ExprPtr z = parse_expression_text("(1.0, -2.0)");
  EXPECT_EQ(z->kind, ExprKind::kComplex);
  ExprPtr s = parse_expression_text("x%y(1)(2:3)");
  EXPECT_EQ(s->kind, ExprKind::kApply);
  EXPECT_EQ(s->args[0]->kind, ExprKind::kRange);
  EXPECT_EQ(s->base->kind, ExprKind::kApply);
  EXPECT_EQ(s->base->base->kind, ExprKind::kComponent);
}

}  // namespace
}  // namespace f95mini
