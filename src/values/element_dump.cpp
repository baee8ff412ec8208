#include "values/element_dump.h"

#include <algorithm>
#include <cstdint>

#include "values/crt_format.h"
#include "values/error_codes.h"
#include "values/value_format.h"

namespace vantor {

namespace {

unsigned low_word(const void* pointer) { return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer)); }

class Dump {
 public:
  explicit Dump(std::string& out) : out_(out) {}
  void line(int indent, const std::string& text) {
    out_.append(static_cast<std::size_t>(indent) * 2, ' ');
    out_ += text;
    out_ += '\n';
  }

 private:
  std::string& out_;
};

std::string row(const std::array<std::int64_t, kMaxRank>& values, int count) {
  std::string text;
  for (int d = 0; d < count; ++d) text += crt_format("%lld ", static_cast<long long>(values[static_cast<std::size_t>(d)]));
  return text;
}

std::string first_bytes(const element& e, TargetMemory& memory) {
  std::uint8_t bytes[16] = {};
  std::size_t n = 0;
  if (e.is_constant()) {
    n = static_cast<std::size_t>(std::clamp<std::int64_t>(e.size, 0, 16));
    if (const std::uint8_t* held = constant_bytes(e)) std::copy(held, held + n, bytes);
  } else if (memory.is_readable(e.address)) {
    n = 16;
    while (n > 0 && memory.read(e.address, bytes, n) != n) --n;
  }
  std::string text;
  for (std::size_t i = 0; i < n; ++i) text += crt_format("%02x ", bytes[i]);
  return text;
}

void dump(const element& e, TargetMemory& memory, int indent, Dump& out) {
  out.line(indent, crt_format("Element at: %x", low_word(&e)));
  std::string name = e.error_code ? std::string() : type_name_text(e, memory);
  if (e.type == kTypeReference && name.empty()) name = "<ref>";
  out.line(indent, crt_format("type: %s (%d)", name.c_str(), e.type));
  out.line(indent, crt_format("address: %x %s", static_cast<unsigned>(e.address), first_bytes(e, memory).c_str()));
  out.line(indent, crt_format("size: %lld", static_cast<long long>(e.size)));
  out.line(indent, crt_format("lang_code: %d", e.lang_code));
  out.line(indent, crt_format("is_constant: %u", e.is_constant() ? 1u : 0u));
  out.line(indent, crt_format("is_typedef: %u", e.is_typedef() ? 1u : 0u));
  if (e.flags & kElementCanMutate) out.line(indent, "element can mutate");
  out.line(indent, crt_format("error_code: (%d), %s", e.error_code, error_text(e.error_code).c_str()));
  if (e.type == kTypeArray && e.array) {
    const array_info& a = *e.array;
    int dims = std::clamp<int>(a.num_dims, 0, kMaxRank);
    out.line(indent, "array_info:");
    out.line(indent + 1, crt_format("General array at: %x", low_word(&a)));
    out.line(indent + 1, "first_element: " + row(a.first_element, dims));
    out.line(indent + 1, "last_element: " + row(a.last_element, dims));
    out.line(indent + 1, "distance: " + row(a.distance, dims));
    out.line(indent + 1, "indexes: " + row(a.indexes, dims));
    out.line(indent + 1, crt_format("indexes_given: %d", a.indexes_given));
    out.line(indent + 1, crt_format("num_dims: %d", a.num_dims));
    out.line(indent + 1, crt_format("enforce_bounds: %d", a.enforce_bounds ? 1 : 0));
  }
  if (e.type == kTypeStructure && e.structure) {
    out.line(indent, "structure_info:");
    out.line(indent + 1, crt_format("General structure at: %x", low_word(e.structure.get())));
    out.line(indent + 1, crt_format("give_all_components: %u", e.structure->give_all_components ? 1u : 0u));
  }
  if (e.next) {
    out.line(indent, "next:");
    dump(*e.next, memory, indent + 2, out);
  }
}

}  // namespace

std::string dump_element(const element& e, TargetMemory& memory, int indent) {
  std::string text;
  Dump out(text);
  dump(e, memory, indent, out);
  return text;
}

}  // namespace vantor
