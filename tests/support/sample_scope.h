// Test support: a scope of sample variables of every kind in fake memory (integers,
// reals, a complex, arrays, a CHARACTER, a derived type, pointers, a logical, a
// reference, failures and a type name), for the evaluator's tests and its fuzz target.
// Names are looked up ignoring case, as the frames do.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "support/fake_target.h"
#include "values/eval.h"

namespace vantor::testing {

class SampleScope {
 public:
  SampleScope();
  SampleScope(const SampleScope&) = delete;
  SampleScope& operator=(const SampleScope&) = delete;

  EvalScope scope();

  FakeTarget target;
  os::ThreadContext registers;
  DerivedTypeRecord point;
  std::map<std::string, std::function<std::unique_ptr<element>()>> variables;
  std::int32_t language = kLangFortran95;

 private:
  template <typename T>
  void poke(Address address, T value) {
    target.system.poke_value<T>(address, value);
  }
  void define(const std::string& name, std::function<std::unique_ptr<element>()> make) { variables[name] = make; }
  std::unique_ptr<element> scalar(std::int32_t type, Address address);
  std::unique_ptr<element> vector(std::int32_t type, Address address, std::int64_t lower, std::int64_t upper);
  std::unique_ptr<element> structure(Address address);
  std::unique_ptr<element> pointer(Address address, std::unique_ptr<element> pointee);
};

}  // namespace vantor::testing
