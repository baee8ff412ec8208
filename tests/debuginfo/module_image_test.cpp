#include <gmock/gmock.h>

#include <functional>

#include "debuginfo/module_test_support.h"

namespace vantor::testing {
namespace {

using ::testing::IsEmpty;

class ModuleImageTest : public ModuleTest {
 protected:
  // Loads the image and returns what the Module printed.
  std::string load_capturing(DebugImageBuilder& builder) {
    ::testing::internal::CaptureStdout();
    module = &load(builder);
    return ::testing::internal::GetCapturedStdout();
  }
  Module* module = nullptr;
};

TEST_F(ModuleImageTest, OpensByNameAndComputesTheEndFromSizeOfImage) {
  image.routine("MAIN", 0x1000, 0x20).line(1, 0);
  EXPECT_EQ(load_capturing(image), "");
  EXPECT_EQ(module->display_name(), L"prog.exe");
  EXPECT_TRUE(module->owns_file());
  EXPECT_EQ(module->end_address(), kBase + image.size_of_image());
  ASSERT_NE(module->file_header(), nullptr);
  EXPECT_EQ(module->optional_header(), module->file_header() + 20);
  EXPECT_EQ(module->first_section(), module->optional_header() + 240);
  EXPECT_EQ(std::memcmp(module->first_section(), ".text", 5), 0);
  EXPECT_TRUE(module->has_routine_map());
}

TEST_F(ModuleImageTest, ThroughTheEventHandleTakesTheFinalPathAndClosesTheHandle) {
  image.routine("MAIN", 0x1000, 0x20);
  image.install(target.system, kPath);
  std::uint32_t error = 0;
  os::Handle handle = target.system.open_file_for_reading(kPath, error);
  {
    Module module(process, handle, L"", kBase, true);
    EXPECT_EQ(module.path(), std::wstring(L"\\\\?\\") + kPath);
    EXPECT_EQ(module.display_name(), L"prog.exe");
    EXPECT_FALSE(module.owns_file());
    EXPECT_TRUE(module.has_routine_map());
    EXPECT_EQ(target.system.final_path(handle), module.path());
  }
  EXPECT_EQ(target.system.final_path(handle), L"");
}

TEST_F(ModuleImageTest, AnImageThatCannotBeMappedOrIsTooShortIsUsableWithoutRoutines) {
  ::testing::internal::CaptureStdout();
  Module missing(process, 0, L"C:\\missing.exe", kBase, false);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "CreateFileMapping returned 6\n");
  EXPECT_FALSE(missing.has_routine_map());
  EXPECT_EQ(missing.routine_at(kBase + 0x1000), nullptr);
  EXPECT_EQ(missing.display_name(), L"missing.exe");
  target.system.add_text_file(L"C:\\tiny.exe", "MZ");
  ::testing::internal::CaptureStdout();
  Module tiny(process, 0, L"C:\\tiny.exe", kBase, false);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Not PE file\n");
}

// Each damage leaves a module without routines, and says so only where the run-time
// library's loader would.
TEST_F(ModuleImageTest, DamagedHeadersAndMapsMeanNoRoutines) {
  struct Damage {
    const char* name;
    std::function<void(DebugImageBuilder&)> apply;
    std::string printed;
    bool pe = true;  // the headers are still read: the module has its end
  };
  const Damage damages[] = {
      {"wrong signature", [](DebugImageBuilder& b) { b.pe_signature("PX"); }, "Not PE file\n", false},
      // A real header is there, but only the low 16 bits count and they turn negative.
      {"header offset 0x8000", [](DebugImageBuilder& b) { b.new_header_offset(0x8000); }, "Not PE file\n", false},
      {"debug info offset 0", [](DebugImageBuilder& b) { b.debug_info_offset(0); }, ""},
      {"debug info offset -0x1000", [](DebugImageBuilder& b) { b.debug_info_offset(-0x1000); }, ""},
      {"debug info offset outside", [](DebugImageBuilder& b) { b.debug_info_offset(0x7FFF0000); }, ""},
      {"map version 1", [](DebugImageBuilder& b) { b.map_version(1); }, "map version 1\n"},
      {"map version 3", [](DebugImageBuilder& b) { b.map_version(3); }, "map version 3\n"},
      {"map magic", [](DebugImageBuilder& b) { b.map_magic("QUAR"); }, ""},
  };
  for (const Damage& damage : damages) {
    SCOPED_TRACE(damage.name);
    DebugImageBuilder builder(kBase);
    builder.routine("MAIN", 0x1000, 0x20).line(1, 0);
    damage.apply(builder);
    EXPECT_EQ(load_capturing(builder), damage.printed);
    EXPECT_FALSE(module->has_routine_map());
    EXPECT_EQ(module->routine_at(kBase + 0x1000), nullptr);
    EXPECT_EQ(module->routine_start("MAIN"), 0u);
    EXPECT_EQ(module->end_address(), damage.pe ? builder.end() : 0u);
    EXPECT_EQ(module->file_header() != nullptr, damage.pe);
  }
  EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(ModuleImageTest, OnlyTheLow16BitsOfTheNewHeaderOffsetAreUsed) {
  image.routine("MAIN", 0x1000, 0x20);
  image.install(target.system, kPath);
  std::vector<std::uint8_t> file = image.file_bytes();
  std::uint32_t offset_with_high_bits = 0x00010080;  // the header is at 0x80
  std::memcpy(file.data() + 60, &offset_with_high_bits, 4);
  target.system.add_file(kPath, file);
  Module module(process, 0, kPath, kBase, true);
  EXPECT_TRUE(module.has_routine_map());
}

TEST_F(ModuleImageTest, AnUnreadableDebugInfoOffsetMeansNoRoutines) {
  image.routine("MAIN", 0x1000, 0x20);
  image.install(target.system, kPath);
  target.system.unmap(kBase, 0x1000);
  Module module(process, 0, kPath, kBase, true);
  EXPECT_FALSE(module.has_routine_map());
  EXPECT_THAT(boxes(), IsEmpty());
}

}  // namespace
}  // namespace vantor::testing
