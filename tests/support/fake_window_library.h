// Test support: a window library with chosen metrics whose views record what the models
// asked of them and report a location the test sets, as if the user had moved the window.
#pragma once

#include <deque>
#include <vector>

#include "winlib/window_library.h"

namespace vantor::testing {

class FakeWindowLibrary;

class FakeWindowView : public winlib::WindowView {
 public:
  FakeWindowView(FakeWindowLibrary& library, ui::text_window& window) : window(window), library_(library) {}
  ~FakeWindowView() override;
  void redraw() override { ++redraws; }
  void bring_to_front() override { ++raises; }
  std::optional<winlib::WindowLocation> location() override { return reported_location; }

  ui::text_window& window;
  int redraws = 0;
  int raises = 0;
  std::optional<winlib::WindowLocation> reported_location;

 private:
  FakeWindowLibrary& library_;
};

// Installs itself as the session's library; restores the previous one.
class FakeWindowLibrary : public winlib::WindowLibrary {
 public:
  FakeWindowLibrary();
  ~FakeWindowLibrary() override;
  FakeWindowLibrary(const FakeWindowLibrary&) = delete;
  FakeWindowLibrary& operator=(const FakeWindowLibrary&) = delete;

  std::int64_t pixels_per_h_unit = 8;
  std::int64_t pixels_per_v_unit = 16;
  winlib::PixelSize client{1024, 768};
  winlib::PixelSize screen{1280, 1024};
  bool opens_views = true;
  // Answers for the prompts, taken first to last; an empty queue cancels.
  std::deque<std::optional<long>> number_answers;
  std::deque<std::optional<std::string>> text_answers;
  struct Prompt {
    std::string caption, question;
    int x, y, width;
  };
  std::vector<Prompt> prompts;
  // Answers for the Command dialog, taken first to last (an empty queue cancels), and what
  // the dialog was shown with.
  std::deque<std::optional<std::string>> command_answers;
  std::vector<std::string> command_initial_texts;
  std::vector<std::vector<std::string>> command_histories;
  bool modal_flag_seen = false;
  std::vector<FakeWindowView*> views;  // the views still open, each owned by its window
  int closed_views = 0;

  // The view of a window, or null.
  FakeWindowView* view_of(const ui::text_window& window) const;

  std::int64_t info(const std::string& name) override;
  winlib::PixelSize main_client_size() override { return client; }
  winlib::PixelSize screen_size() override { return screen; }
  std::unique_ptr<winlib::WindowView> open_view(ui::text_window& window) override;
  std::optional<long> prompt_number(const std::string& caption, const std::string& question, int x, int y,
                                    int width) override;
  std::optional<std::string> prompt_text(const std::string& caption, const std::string& question, int x, int y,
                                         int width) override;
  std::optional<std::string> command_dialog(const std::string& initial_text,
                                            const std::vector<std::string>& history) override;

 private:
  winlib::WindowLibrary* previous_;
};

}  // namespace vantor::testing
