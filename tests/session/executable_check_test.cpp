#include "session/executable_check.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/fake_target.h"

namespace vantor {
namespace {

// A DOS header pointing at a PE header at `offset` with the given machine field.
std::vector<std::uint8_t> image(std::int32_t offset, std::uint16_t machine, std::size_t size = 1024) {
  std::vector<std::uint8_t> bytes(size, 0);
  bytes[0] = 'M';
  bytes[1] = 'Z';
  std::memcpy(bytes.data() + 60, &offset, 4);
  if (offset >= 0 && static_cast<std::size_t>(offset) + 6 <= size) {
    bytes[offset] = 'P';
    bytes[offset + 1] = 'E';
    std::memcpy(bytes.data() + offset + 4, &machine, 2);
  }
  return bytes;
}

TEST(ExecutableCheck, SixtyFourAndThirtyTwoBitImages) {
  EXPECT_EQ(classify_executable(image(0x80, 0x8664)), ExecutableKind::kOther);
  EXPECT_EQ(classify_executable(image(0x80, 0x014C)), ExecutableKind::kI386);
  EXPECT_EQ(classify_executable(image(1018, 0x014C)), ExecutableKind::kI386);
}

TEST(ExecutableCheck, HeaderOffsetMustLieInTheFirstKilobyte) {
  EXPECT_EQ(classify_executable(image(1025, 0x8664)), ExecutableKind::kDamaged);
  EXPECT_EQ(classify_executable(image(-4, 0x8664)), ExecutableKind::kDamaged);
  EXPECT_EQ(classify_executable(image(0x7FFFFFFF, 0x8664)), ExecutableKind::kDamaged);
  // 1024 is accepted, and past the bytes read there is no "PE".
  EXPECT_EQ(classify_executable(image(1024, 0x8664)), ExecutableKind::kNotExecutable);
}

TEST(ExecutableCheck, MissingSignaturesAndShortFiles) {
  auto no_mz = image(0x80, 0x8664);
  no_mz[0] = 'Z';
  EXPECT_EQ(classify_executable(no_mz), ExecutableKind::kNotExecutable);
  auto no_pe = image(0x80, 0x8664);
  no_pe[0x81] = 'X';
  EXPECT_EQ(classify_executable(no_pe), ExecutableKind::kNotExecutable);
  EXPECT_EQ(classify_executable({}), ExecutableKind::kNotExecutable);
  EXPECT_EQ(classify_executable({'M'}), ExecutableKind::kNotExecutable);
  EXPECT_EQ(classify_executable({'M', 'Z'}), ExecutableKind::kNotExecutable);  // offset 0: "MZ" is not "PE"
  // A file that ends inside the PE header: the machine field reads as zero.
  EXPECT_EQ(classify_executable(image(0x40, 0x014C, 0x43)), ExecutableKind::kNotExecutable);
  auto cut = image(0x40, 0x014C, 0x46);
  cut.resize(0x44);
  EXPECT_EQ(classify_executable(cut), ExecutableKind::kOther);
}

TEST(ExecutableCheck, FilesAreReadThroughTheSystemLayer) {
  testing::FakeTarget target;
  target.system.add_file(L"C:\\p\\good.exe", image(0x80, 0x8664, 4096));
  target.system.add_file(L"C:\\p\\old.exe", image(0x80, 0x014C));
  EXPECT_EQ(check_executable(L"C:\\p\\good.exe"), ExecutableKind::kOther);
  EXPECT_EQ(check_executable(L"C:\\p\\old.exe"), ExecutableKind::kI386);
  EXPECT_EQ(check_executable(L"C:\\p\\missing.exe"), ExecutableKind::kUnreadable);
  EXPECT_STREQ(load_error_text(ExecutableKind::kDamaged), "There seems to be something wrong with this executable file");
  EXPECT_STREQ(load_error_text(ExecutableKind::kNotExecutable), "This does not appear to be an executable file");
}

}  // namespace
}  // namespace vantor
