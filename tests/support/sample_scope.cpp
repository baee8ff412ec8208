#include "support/sample_scope.h"

#include <strings.h>

#include "debuginfo/debug_type_codes.h"
#include "values/error_codes.h"

namespace vantor::testing {

namespace {

std::unique_ptr<VariableRecord> component(const std::string& name, std::uint32_t type, std::uint64_t offset,
                                          std::uint32_t size) {
  auto r = std::make_unique<VariableRecord>();
  r->name = name;
  r->descriptor = type << 4;
  r->address_value = offset;
  r->size = size;
  return r;
}

}  // namespace

SampleScope::SampleScope() {
  poke<std::int32_t>(0x1000, 7);
  poke<std::int16_t>(0x1004, -3);
  poke<std::int64_t>(0x1008, 5000000000LL);
  poke<double>(0x1010, 2.5);
  poke<float>(0x1018, 1.5f);
  poke<double>(0x1020, 1.0);
  poke<double>(0x1028, 2.0);
  for (int i = 0; i < 5; ++i) poke<std::int32_t>(0x1100 + 4 * i, 10 * (i + 1));
  for (int i = 0; i < 9; ++i) poke<double>(0x1200 + 8 * i, i);
  target.system.poke(0x1300, "abc     ", 8);
  poke<float>(0x1400, 0.5f);
  poke<std::int32_t>(0x1404, 99);
  for (int i = 0; i < 3; ++i) poke<std::int32_t>(0x1408 + 4 * i, i + 1);
  poke<std::uint64_t>(0x1500, 0x1100);
  poke<std::uint64_t>(0x1508, 0x1400);
  poke<std::uint64_t>(0x1510, 0x1600);
  poke<std::uint64_t>(0x1518, 0);
  poke<std::uint64_t>(0x1520, 0x1000);
  poke<std::uint64_t>(0x1528, 0x99990000);
  target.system.poke(0x1600, "hello", 6);
  poke<std::int32_t>(0x1700, 1);

  point.name = "POINT";
  point.components.push_back(component("X", kDebugReal4, 0, 4));
  point.components.push_back(component("N", kDebugInteger4, 4, 4));
  auto v = component("V", kDebugInteger4, 8, 4);
  v->descriptor |= 1u << 9;
  v->array = std::make_unique<ArrayDescriptorRecord>();
  v->array->rank = 1;
  v->array->dimensions[0].bounds = {ArrayBound{kBoundConstant, 1}, ArrayBound{kBoundConstant, 3}, ArrayBound{}};
  point.components.push_back(std::move(v));

  define("N", [this] { return scalar(kTypeInteger4, 0x1000); });
  define("K", [this] { return scalar(kTypeInteger2, 0x1004); });
  define("BIG", [this] { return scalar(kTypeInteger8, 0x1008); });
  define("X", [this] { return scalar(kTypeReal8, 0x1010); });
  define("F", [this] { return scalar(kTypeReal4, 0x1018); });
  define("Z", [this] { return scalar(kTypeComplex16, 0x1020); });
  define("A", [this] { return vector(kTypeInteger4, 0x1100, 1, 5); });
  define("M", [this] {
    auto m = vector(kTypeReal8, 0x1200, 0, 2);
    m->array->num_dims = 2;
    m->array->first_element[1] = 1;
    m->array->last_element[1] = 3;
    m->array->distance[1] = 24;
    return m;
  });
  define("C", [this] {
    auto c = scalar(kTypeCharacter, 0x1300);
    c->size = 8;
    return c;
  });
  define("S", [this] { return structure(0x1400); });
  define("P", [this] { return pointer(0x1500, scalar(kTypeInteger4, 0)); });
  define("SP", [this] { return pointer(0x1508, structure(0)); });
  define("CP", [this] { return pointer(0x1510, scalar(kTypeInteger1, 0)); });
  define("NP", [this] { return pointer(0x1518, scalar(kTypeInteger4, 0)); });
  define("VP", [this] { return pointer(0x1520, scalar(kTypeVoid, 0)); });
  define("BP", [this] { return pointer(0x1528, scalar(kTypeInteger4, 0)); });
  define("QP", [this] { return pointer(0x1500, scalar(kTypeReal8, 0)); });
  define("RAW", [this] { return pointer(0x1500, nullptr); });
  define("L", [this] { return scalar(kTypeLogical4, 0x1700); });
  define("R", [this] {
    auto r = scalar(kTypeReference, 0x1520);
    r->next = scalar(kTypeInteger4, 0);
    return r;
  });
  define("GONE", [] { return make_error_element(kErrorNotAllocated, kLangFortran95); });
  define("T", [] {
    auto t = make_element(kTypeStructure, kLangFortran95);
    t->flags |= kElementTypedef;
    return t;
  });
  define("RAX", [this] { return scalar(kTypeInteger4, 0x1000); });
  registers.rbx = 0x1234;
  registers.r15 = 77;
}

std::unique_ptr<element> SampleScope::scalar(std::int32_t type, Address address) {
  auto e = make_element(type, language);
  e->address = address;
  e->size = scalar_size(type);
  return e;
}

std::unique_ptr<element> SampleScope::vector(std::int32_t type, Address address, std::int64_t lower, std::int64_t upper) {
  auto e = make_element(kTypeArray, language);
  e->address = address;
  e->next = scalar(type, 0);
  e->array = std::make_unique<array_info>();
  e->array->num_dims = 1;
  e->array->first_element[0] = lower;
  e->array->last_element[0] = upper;
  e->array->distance[0] = scalar_size(type);
  e->size = (upper - lower + 1) * scalar_size(type);
  return e;
}

std::unique_ptr<element> SampleScope::structure(Address address) {
  auto e = make_element(kTypeStructure, language);
  e->address = address;
  e->size = 20;
  e->structure = std::make_unique<structure_info>();
  e->structure->type = &point;
  return e;
}

std::unique_ptr<element> SampleScope::pointer(Address address, std::unique_ptr<element> pointee) {
  auto e = scalar(kTypePointer8, address);
  e->next = std::move(pointee);
  return e;
}

EvalScope SampleScope::scope() {
  EvalScope s;
  s.memory = &target.memory;
  s.language = language;
  s.registers = &registers;
  s.global_lookup = [this](std::string_view name) -> std::unique_ptr<element> {
    for (auto& [key, make] : variables)
      if (key.size() == name.size() && strncasecmp(key.c_str(), name.data(), name.size()) == 0) return make();
    return nullptr;
  };
  return s;
}

}  // namespace vantor::testing
