// The checks of an executable before it is started. Whole files of each kind are refused
// end to end with their messages (tests/e2e/cases/load_errors.case); here the limits.
#include "session/executable_check.h"

#include "session/session_fixture.h"

namespace vantor {
namespace {

using testing::pe_image;

TEST(ExecutableCheck, TheHeaderOffsetMachineAndSignaturesDecide) {
  auto no_mz = pe_image(0x80, 0x8664);
  no_mz[0] = 'Z';
  auto no_pe = pe_image(0x80, 0x8664);
  no_pe[0x81] = 'X';
  auto cut = pe_image(0x40, 0x014C, 0x46);
  cut.resize(0x44);
  struct Case {
    const char* what;
    std::vector<std::uint8_t> bytes;
    ExecutableKind kind;
  };
  const Case cases[] = {
      {"64-bit", pe_image(0x80, 0x8664), ExecutableKind::kOther},
      {"32-bit", pe_image(0x80, 0x014C), ExecutableKind::kI386},
      {"last offset with room for the machine", pe_image(1018, 0x014C), ExecutableKind::kI386},
      {"offset past the first kilobyte", pe_image(1025, 0x8664), ExecutableKind::kDamaged},
      {"negative offset", pe_image(-4, 0x8664), ExecutableKind::kDamaged},
      {"huge offset", pe_image(0x7FFFFFFF, 0x8664), ExecutableKind::kDamaged},
      {"offset 1024: past the bytes read, no PE", pe_image(1024, 0x8664), ExecutableKind::kNotExecutable},
      {"no MZ", no_mz, ExecutableKind::kNotExecutable},
      {"no PE", no_pe, ExecutableKind::kNotExecutable},
      {"empty", {}, ExecutableKind::kNotExecutable},
      {"MZ alone: offset 0, and MZ is not PE", {'M', 'Z'}, ExecutableKind::kNotExecutable},
      {"too short to hold the signature", pe_image(0x40, 0x014C, 0x43), ExecutableKind::kNotExecutable},
      {"ends before the machine field, read as zero", cut, ExecutableKind::kOther},
  };
  for (const Case& c : cases) EXPECT_EQ(classify_executable(c.bytes), c.kind) << c.what;
}

TEST(ExecutableCheck, FilesAreReadThroughTheSystemLayer) {
  testing::FakeTarget target;
  target.system.add_file(L"C:\\p\\good.exe", pe_image(0x80, 0x8664, 4096));
  target.system.add_file(L"C:\\p\\old.exe", pe_image(0x80, 0x014C));
  EXPECT_EQ(check_executable(L"C:\\p\\good.exe"), ExecutableKind::kOther);
  EXPECT_EQ(check_executable(L"C:\\p\\old.exe"), ExecutableKind::kI386);
  EXPECT_EQ(check_executable(L"C:\\p\\missing.exe"), ExecutableKind::kUnreadable);
}

}  // namespace
}  // namespace vantor
