#include "support/fake_window_library.h"

#include <algorithm>

namespace vantor::testing {

FakeWindowView::~FakeWindowView() {
  std::erase(library_.views, this);
  ++library_.closed_views;
}

FakeWindowLibrary::FakeWindowLibrary() : previous_(&winlib::window_library()) { winlib::set_window_library(this); }

FakeWindowLibrary::~FakeWindowLibrary() { winlib::set_window_library(previous_); }

FakeWindowView* FakeWindowLibrary::view_of(const ui::text_window& window) const {
  auto it = std::find_if(views.begin(), views.end(), [&](FakeWindowView* view) { return &view->window == &window; });
  return it == views.end() ? nullptr : *it;
}

std::int64_t FakeWindowLibrary::info(const std::string& name) {
  if (name == "PIXELS_PER_H_UNIT") return pixels_per_h_unit;
  if (name == "PIXELS_PER_V_UNIT") return pixels_per_v_unit;
  return 0;
}

std::unique_ptr<winlib::WindowView> FakeWindowLibrary::open_view(ui::text_window& window) {
  if (!opens_views) return nullptr;
  auto view = std::make_unique<FakeWindowView>(*this, window);
  views.push_back(view.get());
  return view;
}

std::optional<long> FakeWindowLibrary::prompt_number(const std::string& caption, const std::string& question, int x,
                                                     int y, int width) {
  prompts.push_back({caption, question, x, y, width});
  if (number_answers.empty()) return std::nullopt;
  auto answer = number_answers.front();
  number_answers.pop_front();
  return answer;
}

std::optional<std::string> FakeWindowLibrary::prompt_text(const std::string& caption, const std::string& question,
                                                          int x, int y, int width) {
  prompts.push_back({caption, question, x, y, width});
  if (text_answers.empty()) return std::nullopt;
  auto answer = text_answers.front();
  text_answers.pop_front();
  return answer;
}

std::optional<std::string> FakeWindowLibrary::command_dialog(const std::string& initial_text,
                                                             const std::vector<std::string>& history) {
  command_initial_texts.push_back(initial_text);
  command_histories.push_back(history);
  modal_flag_seen = winlib::ModalDialogActive;
  if (command_answers.empty()) return std::nullopt;
  auto answer = command_answers.front();
  command_answers.pop_front();
  return answer;
}

}  // namespace vantor::testing
