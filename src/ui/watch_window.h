// The watch window: the expressions the user watches, each evaluated afresh at every
// refresh in the current frame.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/scrolling_window.h"

namespace vantor::ui {

struct watch_entry {
  std::string expression;
};

struct watch_value {
  enum State { kValue, kOutOfScope, kError };
  State state = kValue;
  std::string text;  // the value text when state is kValue
};

// Popup choices.
constexpr int kPopupDeleteWatch = 1;

class watch_window : public scrolling_window {
 public:
  // Evaluates one watch expression in the current frame; the evaluator part supplies it.
  using evaluator = std::function<watch_value(const std::string& expression)>;

  explicit watch_window(evaluator evaluate);

  const std::vector<watch_entry>& entries() const { return entries_; }
  void add_watch(const std::string& expression);
  // Delete Entry: removes the selected watch; false when none is selected.
  bool delete_selected();
  // The watch of the selected row; null when none.
  const watch_entry* selected_watch() const;

  bool handle_popup_choice(int choice) override;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  evaluator evaluate_;
  std::vector<watch_entry> entries_;
};

}  // namespace vantor::ui
