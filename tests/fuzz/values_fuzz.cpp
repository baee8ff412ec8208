// Fuzz target over the evaluator and the value formatter. The first byte picks the mode,
// the scope's language and the "=" mode:
//   mode 0: the rest is an expression, evaluated in the sample scope and formatted;
//   mode 1: the rest is "left = right", evaluated and assigned as the "let" command does;
//   mode 2: the rest describes an element (type, language, address, size, bounds) over
//           the sample memory, which is formatted, dumped and read every way.
// No input may crash, leak, hang or trip an internal assertion.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "support/sample_scope.h"
#include "values/assignment.h"
#include "values/element_dump.h"
#include "values/eval.h"
#include "values/value_format.h"

namespace {

using namespace vantor;

class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  std::uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  std::int64_t small(std::int64_t range) { return static_cast<std::int64_t>(byte()) % range; }
  std::int64_t wide() {
    std::int64_t value = 0;
    for (int i = 0; i < 2; ++i) value = value * 256 + byte();
    return value - 0x8000;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

void format_every_way(element& e, TargetMemory& memory, std::size_t capacity) {
  TextOutput out(capacity);
  value_text(e, memory, out.buffer());
  TextOutput name(capacity);
  type_name(e, memory, name.buffer());
  dump_element(e, memory);
  value_text_or_error(e, memory, 64);
}

std::unique_ptr<element> described_element(Bytes& in, int depth) {
  static constexpr std::int32_t kLanguages[] = {0, 1, 3, 4, 2};
  std::int32_t type = static_cast<std::int32_t>(in.small(28));
  auto e = make_element(type, kLanguages[in.small(5)]);
  // Addresses land in and around the sample memory, including its unmapped gaps.
  e->address = 0x1000 + static_cast<Address>(in.small(0x800)) - 8;
  if (in.byte() == 0xFF) e->address = 0x00000001F0F0F0F0ull;
  std::int64_t scalar = scalar_size(type);
  e->size = scalar > 0 ? scalar : in.small(64);
  if (type <= kTypeEnum && in.small(4) == 0) {
    e->bit_count = static_cast<std::uint32_t>(in.small(40));
    e->bit_offset = static_cast<std::uint32_t>(in.small(40));
  }
  if (in.small(3) == 0) {
    std::uint8_t bytes[64];
    for (auto& b : bytes) b = in.byte();
    set_constant(*e, bytes, e->size, type);
  }
  if (type == kTypeArray) {
    e->array = std::make_unique<array_info>();
    e->array->num_dims = static_cast<std::int8_t>(in.small(9));
    for (int d = 0; d < kMaxRank; ++d) {
      e->array->first_element[d] = in.wide();
      e->array->last_element[d] = e->array->first_element[d] + in.small(20) - 2;
      e->array->distance[d] = in.small(32);
    }
  }
  if ((type == kTypePointer8 || type == kTypeReference || type == kTypeArray) && depth < 3 && in.small(4) != 0)
    e->next = described_element(in, depth + 1);
  if (in.small(8) == 0) e->error_code = static_cast<std::int32_t>(in.small(45));
  return e;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 4096) return 0;
  static constexpr std::int32_t kLanguages[] = {kLangFortran95, kLangC, kLangFortranDecorated, kLangFortran};
  // Evaluation only reads the sample memory, so one scope serves every input; an
  // assignment writes it, so it gets a fresh one.
  static testing::SampleScope* shared = new testing::SampleScope;
  std::unique_ptr<testing::SampleScope> fresh;
  if ((data[0] & 3) == 1) fresh = std::make_unique<testing::SampleScope>();
  testing::SampleScope& sample = fresh ? *fresh : *shared;
  sample.language = kLanguages[(data[0] >> 2) & 3];
  unsigned flags = (data[0] & 0x10) ? kEvalEqualsCompares : 0;
  std::size_t capacity = 1 + (data[0] >> 5) * 37;
  std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  TargetMemory& memory = sample.target.memory;

  switch (data[0] & 3) {
    case 0:
    case 3: {
      EvalResult result = evaluate(text, sample.scope(), flags);
      format_every_way(*result.value, memory, capacity);
      break;
    }
    case 1: {
      EvalResult left = evaluate(text, sample.scope(), 0);
      std::size_t equals = text.find('=', left.stop);
      if (equals == std::string::npos) break;
      EvalResult right = evaluate(std::string_view(text).substr(equals + 1), sample.scope(), flags);
      if (left.value->error_code == 0 && right.value->error_code == 0) assign(*left.value, *right.value, memory);
      format_every_way(*left.value, memory, capacity);
      break;
    }
    case 2: {
      Bytes in(data + 1, size - 1);
      auto e = described_element(in, 0);
      format_every_way(*e, memory, capacity);
      if (e->type != kTypePointer8 && !(scalar_size(e->type) == 0 && !e->is_constant() && e->size >= 20)) {
        value_int32(*e, memory);
        value_int64(*e, memory);
        value_double(*e, memory);
      }
      is_undefined(*e, memory);
      clone_element(*e);
      break;
    }
  }
  return 0;
}
