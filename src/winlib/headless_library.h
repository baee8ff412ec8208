// The window library of a session without windows: console and silent sessions before
// the main window exists, and native tests. It opens no views and answers no prompts.
//
// Its fixed metrics stand for a main window with a 1024 x 768 pixel client area on a
// 1280 x 1024 screen, with 8 x 16 pixel character cells. So the main window measures
// 127 x 44 character units (1024 / 8 - 1, 768 / 16 - 4), and the desktop defaults to
// 1024 x 819 pixels (four fifths of the screen).
#pragma once

#include "winlib/window_library.h"

namespace vantor::winlib {

class HeadlessLibrary : public WindowLibrary {
 public:
  static constexpr int kPixelsPerHUnit = 8;
  static constexpr int kPixelsPerVUnit = 16;
  static constexpr PixelSize kClientSize{1024, 768};
  static constexpr PixelSize kScreenSize{1280, 1024};

  std::int64_t info(const std::string& name) override;
  PixelSize main_client_size() override { return kClientSize; }
  PixelSize screen_size() override { return kScreenSize; }
  std::unique_ptr<WindowView> open_view(ui::text_window&) override { return nullptr; }
  std::optional<long> prompt_number(const std::string&, const std::string&, int, int, int) override {
    return std::nullopt;
  }
  std::optional<std::string> prompt_text(const std::string&, const std::string&, int, int, int) override {
    return std::nullopt;
  }
};

}  // namespace vantor::winlib
