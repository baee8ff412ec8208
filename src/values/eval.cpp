#include "values/eval.h"

#include <climits>
#include <string>
#include <vector>

#include "stack/stack_frame.h"
#include "values/error_codes.h"
#include "values/eval_operations.h"
#include "values/eval_subscripts.h"
#include "values/eval_tokens.h"
#include "values/registers.h"

namespace vantor {

EvalScope scope_of_frame(StackFrame* frame, TargetMemory& memory, const os::ThreadContext* registers) {
  EvalScope scope;
  scope.memory = &memory;
  scope.frame = frame;
  scope.registers = registers;
  scope.language = kLangC;
  if (frame && is_fortran_language(frame->language_code())) scope.language = frame->language_code();
  return scope;
}

namespace {

// The classic operator-precedence scheme: an operand stack and an operator stack, with
// brackets kept on the operator stack as barriers.
class Evaluator {
 public:
  Evaluator(std::string_view text, const EvalScope& scope, unsigned flags)
      : text_(text), scope_(scope), tokens_(text, scope.language, (flags & kEvalEqualsCompares) != 0),
        context_{*scope.memory, scope.language} {}

  EvalResult run();

 private:
  struct Operand {
    enum Kind { kValue, kName, kOpenBound, kSection } kind = kValue;
    std::unique_ptr<element> value;
    std::string name;
    Subscript section;  // kSection
  };
  struct PendingOperator {
    std::int32_t code;
    char opened_by;           // '(' or '[' for brackets
    std::size_t operand_mark; // operands below this belong outside the bracket
  };

  void fail(std::int32_t code) {
    if (!error_) error_ = code;
  }
  bool handle_operator(std::int32_t code, std::size_t at);
  void push_value(std::unique_ptr<element> value);
  void push_open_bound();
  bool is_bracket(const PendingOperator& op) const { return op.code == kOpOpen || op.code == kOpSubscript; }
  const PendingOperator* innermost_bracket() const;
  void reduce(std::int32_t strength);
  void apply_top();
  void close_bracket(std::int32_t code);
  std::unique_ptr<element> resolve(Operand& operand);
  std::unique_ptr<element> take(Operand& operand);
  std::unique_ptr<element> look_up(const std::string& name);
  std::unique_ptr<element> checked(std::unique_ptr<element> result);
  bool pop(Operand& out);

  std::string_view text_;
  const EvalScope& scope_;
  Tokenizer tokens_;
  OperationContext context_;
  std::vector<Operand> operands_;
  std::vector<PendingOperator> operators_;
  bool operand_seen_ = false;
  std::int32_t error_ = 0;
  std::size_t stop_ = 0;
  bool stopped_ = false;
};

std::unique_ptr<element> Evaluator::look_up(const std::string& name) {
  std::unique_ptr<element> found;
  if (scope_.frame)
    found = scope_.frame->find_variable(name);
  else if (scope_.global_lookup)
    found = scope_.global_lookup(name);
  if (!found) found = register_element(name, scope_.registers);
  if (!found) return make_error_element(kErrorUnknownVariable, scope_.language);
  if (found->is_typedef() && found->error_code == 0) found->error_code = kErrorNoObject;
  return found;
}

std::unique_ptr<element> Evaluator::checked(std::unique_ptr<element> result) {
  if (!result) {
    fail(kErrorInternal);
    return nullptr;
  }
  if (result->error_code) {
    fail(result->error_code);
    return nullptr;
  }
  return result;
}

// A name is looked up; a reference stands for what it refers to.
std::unique_ptr<element> Evaluator::resolve(Operand& operand) {
  if (operand.kind == Operand::kOpenBound || operand.kind == Operand::kSection) {
    fail(kErrorSyntax);
    return nullptr;
  }
  std::unique_ptr<element> value =
      operand.kind == Operand::kName ? look_up(operand.name) : std::move(operand.value);
  value = checked(std::move(value));
  if (!value) return nullptr;
  if (value->type == kTypeReference) {
    if (!value->next) {
      fail(kErrorInternal);
      return nullptr;
    }
    Address referee = static_cast<Address>(value_int64(*value, *scope_.memory));
    if (std::int32_t refusal = unreadable_address_error(referee, *scope_.memory)) {
      fail(refusal);
      return nullptr;
    }
    value = object_at(*value->next, referee);
  }
  return value;
}

// As resolve, and an array with subscripts becomes the element or section they name.
std::unique_ptr<element> Evaluator::take(Operand& operand) {
  auto value = resolve(operand);
  if (!value) return nullptr;
  return checked(form_subscripted(std::move(value)));
}

bool Evaluator::pop(Operand& out) {
  if (operands_.empty()) {
    fail(kErrorSyntax);
    return false;
  }
  out = std::move(operands_.back());
  operands_.pop_back();
  return true;
}

void Evaluator::push_value(std::unique_ptr<element> value) {
  Operand operand;
  operand.value = std::move(value);
  operands_.push_back(std::move(operand));
}

void Evaluator::push_open_bound() {
  Operand operand;
  operand.kind = Operand::kOpenBound;
  operands_.push_back(std::move(operand));
  operand_seen_ = true;
}

const Evaluator::PendingOperator* Evaluator::innermost_bracket() const {
  for (auto it = operators_.rbegin(); it != operators_.rend(); ++it)
    if (is_bracket(*it)) return &*it;
  return nullptr;
}

void Evaluator::reduce(std::int32_t strength) {
  while (!error_ && !operators_.empty() && !is_bracket(operators_.back()) &&
         !is_intrinsic_operator(operators_.back().code) && operator_strength(operators_.back().code) >= strength)
    apply_top();
}

void Evaluator::apply_top() {
  PendingOperator op = operators_.back();
  operators_.pop_back();
  if (is_unary_operator(op.code)) {
    Operand operand;
    if (!pop(operand)) return;
    auto value = take(operand);
    if (!value) return;
    if (auto result = checked(apply_unary(op.code, *value, context_))) push_value(std::move(result));
    return;
  }
  Operand right, left;
  if (!pop(right) || !pop(left)) return;
  if (op.code == kOpComponent || op.code == kOpArrow) {
    auto base = take(left);
    if (!base) return;
    if (right.kind != Operand::kName) {
      fail(kErrorMemberNameExpected);
      return;
    }
    auto component = select_component(*base, right.name, op.code == kOpArrow, *scope_.memory);
    if (auto result = checked(std::move(component))) push_value(std::move(result));
    return;
  }
  if (op.code == kOpSection) {
    Operand pair;
    pair.kind = Operand::kSection;
    pair.section.is_section = true;
    for (Operand* bound : {&left, &right}) {
      if (bound->kind == Operand::kOpenBound) continue;
      auto value = take(*bound);
      if (!value) return;
      if (!is_integer_type(value->type)) {
        fail(kErrorSubscriptNotInteger);
        return;
      }
      std::int64_t v = value_int64(*value, *scope_.memory);
      if (bound == &left) {
        pair.section.has_lower = true;
        pair.section.lower = v;
      } else {
        pair.section.has_upper = true;
        pair.section.upper = v;
      }
    }
    operands_.push_back(std::move(pair));
    return;
  }
  auto a = take(left);
  if (!a) return;
  auto b = take(right);
  if (!b) return;
  if (auto result = checked(apply_binary(op.code, *a, *b, context_))) push_value(std::move(result));
}

void Evaluator::close_bracket(std::int32_t code) {
  const PendingOperator* bracket = innermost_bracket();
  if (!bracket) return fail(kErrorTooManyClosing);
  if (code == kOpClose && bracket->opened_by == '[') return fail(kErrorBracketMismatch);
  if (code == kOpSubscriptClose && bracket->opened_by == '(') return fail(kErrorSyntax);
  if (!operand_seen_) {
    if (!operators_.empty() && operators_.back().code == kOpSection)
      push_open_bound();
    else
      return fail(kErrorSyntax);
  }
  reduce(INT_MIN);
  if (error_) return;
  PendingOperator open = operators_.back();
  operators_.pop_back();
  std::size_t inside = operands_.size() - open.operand_mark;

  if (open.code == kOpSubscript) {
    Operand base_operand = std::move(operands_[open.operand_mark - 1]);
    std::vector<Subscript> subscripts;
    for (std::size_t i = open.operand_mark; i < operands_.size(); ++i) {
      Operand& operand = operands_[i];
      Subscript s;
      if (operand.kind == Operand::kSection) {
        s = std::move(operand.section);
      } else {
        s.value = take(operand);
        if (!s.value) return;
      }
      subscripts.push_back(std::move(s));
    }
    operands_.resize(open.operand_mark - 1);
    auto base = resolve(base_operand);
    if (!base) return;
    // Further subscripts go into the dimensions still free; a section, or an array whose
    // dimensions are all taken, is formed first and subscripted as what it names.
    if (base->type == kTypeArray && base->array && base->array->indexes_given > 0 &&
        (base->array->section_dims != 0 || base->array->indexes_given >= base->array->num_dims)) {
      base = checked(form_subscripted(std::move(base)));
      if (!base) return;
    }
    if (std::int32_t error = apply_subscripts(base, subscripts, *scope_.memory)) return fail(error);
    push_value(std::move(base));
  } else {
    if (inside != 1) return fail(kErrorSyntax);
    // A bracketed name is a value, not a name: "s%(x)" selects nothing.
    Operand operand;
    if (!pop(operand)) return;
    auto value = take(operand);
    if (!value) return;
    if (!operators_.empty() && is_intrinsic_operator(operators_.back().code)) {
      std::int32_t intrinsic = operators_.back().code;
      operators_.pop_back();
      value = checked(apply_intrinsic(intrinsic, *value, context_));
      if (!value) return;
    }
    push_value(std::move(value));
  }
  operand_seen_ = true;
}

// Returns false when the operator ended the expression.
bool Evaluator::handle_operator(std::int32_t code, std::size_t at) {
  switch (code) {
    case kOpTrue:
    case kOpFalse:
      if (operand_seen_) {
        fail(kErrorSyntax);
        return true;
      }
      push_value(truth_value(code == kOpTrue, scope_.language));
      operand_seen_ = true;
      return true;
    case kOpOpen:
    case kOpSubscriptOpen:
      if (operand_seen_) {
        reduce(operator_strength(kOpSubscript));
        operators_.push_back({kOpSubscript, code == kOpOpen ? '(' : '[', operands_.size()});
      } else if (code == kOpOpen) {
        operators_.push_back({kOpOpen, '(', operands_.size()});
      } else {
        fail(kErrorSyntax);
      }
      operand_seen_ = false;
      return true;
    case kOpClose:
    case kOpSubscriptClose: close_bracket(code); return true;
    case kOpComma: {
      const PendingOperator* bracket = innermost_bracket();
      if (!bracket) {
        stop_ = at;
        stopped_ = true;
        return false;
      }
      if (bracket->code != kOpSubscript) {
        fail(kErrorSyntax);
        return true;
      }
      if (!operand_seen_ && !operators_.empty() && operators_.back().code == kOpSection) push_open_bound();
      if (!operand_seen_) {
        fail(kErrorSyntax);
        return true;
      }
      reduce(INT_MIN);
      operand_seen_ = false;
      return true;
    }
    case kOpSection: {
      const PendingOperator* bracket = innermost_bracket();
      if (!bracket || bracket->code != kOpSubscript) {
        fail(kErrorSyntax);
        return true;
      }
      if (!operand_seen_) push_open_bound();
      reduce(operator_strength(kOpSection));
      operators_.push_back({kOpSection, 0, 0});
      operand_seen_ = false;
      return true;
    }
    case kOpLength:
    case kOpAddress:
      if (operand_seen_) {
        fail(kErrorSyntax);
        return true;
      }
      operators_.push_back({code, 0, 0});
      operators_.push_back({kOpOpen, '(', operands_.size()});
      return true;
    default: break;
  }

  // The position decides between the unary and binary readings.
  if (!operand_seen_) {
    if (code == kOpPlus) return true;  // unary plus does nothing
    if (code == kOpMinus) code = kOpNegate;
    if (code == kOpTimes) code = kOpDereference;
    if (code == kOpBitAnd) code = kOpAddressOf;
  }
  if (code == kOpRemainder && (scope_.language == kLangFortranDecorated || scope_.language == kLangFortran95))
    code = kOpComponent;
  if (is_unary_operator(code)) {
    if (operand_seen_) fail(kErrorSyntax);
    operators_.push_back({code, 0, 0});
    return true;
  }
  if (!operand_seen_) {
    fail(kErrorSyntax);
    return true;
  }
  reduce(operator_strength(code));
  operators_.push_back({code, 0, 0});
  operand_seen_ = false;
  return true;
}

EvalResult Evaluator::run() {
  stop_ = text_.size();
  while (!error_) {
    Token token = tokens_.next();
    if (token.kind == Token::kEnd) {
      stop_ = text_.size();
      break;
    }
    if (token.kind == Token::kStop) {
      stop_ = token.start;
      break;
    }
    if (token.kind == Token::kError) {
      fail(token.code);
      stop_ = token.start;
      break;
    }
    if (token.kind == Token::kOperand || token.kind == Token::kName) {
      if (operand_seen_) {
        fail(kErrorSyntax);
        stop_ = token.start;
        break;
      }
      Operand operand;
      if (token.kind == Token::kName) {
        operand.kind = Operand::kName;
        operand.name = std::move(token.name);
      } else {
        operand.value = std::move(token.operand);
      }
      operands_.push_back(std::move(operand));
      operand_seen_ = true;
      continue;
    }
    if (!handle_operator(token.code, token.start)) break;
  }
  if (error_ && stop_ == text_.size()) stop_ = tokens_.position();

  EvalResult result;
  result.stop = stop_;
  if (!error_ && !operand_seen_ && !operators_.empty() && !is_bracket(operators_.back())) fail(kErrorSyntax);
  if (!error_) reduce(INT_MIN);
  if (!error_ && innermost_bracket()) fail(operands_.size() == 1 ? kErrorTooManyOpening : kErrorSyntax);
  if (!error_ && operands_.size() != 1) fail(kErrorSyntax);
  if (!error_) result.value = take(operands_.back());
  if (error_ || !result.value) result.value = make_error_element(error_ ? error_ : kErrorInternal, scope_.language);
  return result;
}

}  // namespace

EvalResult evaluate(std::string_view text, const EvalScope& scope, unsigned flags) {
  if (scope.memory == nullptr) {
    EvalResult result;
    result.value = make_error_element(kErrorInternal, scope.language);
    return result;
  }
  Evaluator evaluator(text, scope, flags);
  return evaluator.run();
}

}  // namespace vantor
