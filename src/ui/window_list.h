// The open windows of the session, front first. A window opened here is built, put at
// the front and owned by the list until it is closed; closing saves its layout (when it
// was on screen) and destroys it.
#pragma once

#include <memory>
#include <vector>

#include "ui/text_window.h"

namespace vantor::ui {

class window_list {
 public:
  window_list() = default;
  window_list(const window_list&) = delete;
  window_list& operator=(const window_list&) = delete;
  ~window_list();

  // Builds the window and puts it at the front; returns it, still usable by the caller.
  template <typename Window>
  Window* open(std::unique_ptr<Window> window) {
    Window* raw = window.get();
    adopt(std::unique_ptr<text_window>(std::move(window)));
    return raw;
  }
  // Saves the window's layout when it is on screen, then destroys it. A window not in
  // the list is left alone.
  void close(text_window* window);
  void close_all();

  // The first open window of the kind, front first; null when none is open.
  text_window* find_first(int kind) const;
  template <typename Window>
  Window* find_first_of(int kind) const {
    return dynamic_cast<Window*>(find_first(kind));
  }
  // Every window, front first. A copy, so that the walker may open or close windows.
  std::vector<text_window*> from_front() const;
  bool contains(const text_window* window) const;
  int size() const { return static_cast<int>(windows_.size()); }

  // Moves the window to the front and raises it on screen.
  void bring_forward(text_window* window);
  // The user put the focus on the window: it is already in front on screen.
  void note_focus(text_window* window);

  void refresh_all();
  void refresh_kind(int kind);

 private:
  void adopt(std::unique_ptr<text_window> window);
  bool move_to_front(text_window* window);

  std::vector<std::unique_ptr<text_window>> windows_;  // front first
};

// The windows of the session.
extern window_list OpenWindows;

}  // namespace vantor::ui
