#include "ui/window_list.h"

#include <algorithm>

#include "ui/window_layout.h"

namespace vantor::ui {

window_list OpenWindows;

window_list::~window_list() = default;

void window_list::adopt(std::unique_ptr<text_window> window) {
  text_window* raw = window.get();
  windows_.insert(windows_.begin(), std::move(window));
  raw->build();
}

void window_list::close(text_window* window) {
  auto it = std::find_if(windows_.begin(), windows_.end(), [&](const auto& w) { return w.get() == window; });
  if (it == windows_.end()) return;
  // Out of the list first: nothing reached from the save may find a half-closed window.
  std::unique_ptr<text_window> closing = std::move(*it);
  windows_.erase(it);
  if (closing->update_location_from_view()) save_window_layout(*closing);
}

void window_list::close_all() {
  while (!windows_.empty()) close(windows_.front().get());
}

text_window* window_list::find_first(int kind) const {
  for (const auto& window : windows_)
    if (window->kind() == kind) return window.get();
  return nullptr;
}

std::vector<text_window*> window_list::from_front() const {
  std::vector<text_window*> out;
  out.reserve(windows_.size());
  for (const auto& window : windows_) out.push_back(window.get());
  return out;
}

bool window_list::contains(const text_window* window) const {
  return std::any_of(windows_.begin(), windows_.end(), [&](const auto& w) { return w.get() == window; });
}

bool window_list::move_to_front(text_window* window) {
  auto it = std::find_if(windows_.begin(), windows_.end(), [&](const auto& w) { return w.get() == window; });
  if (it == windows_.end()) return false;
  std::rotate(windows_.begin(), it, it + 1);
  return true;
}

void window_list::bring_forward(text_window* window) {
  if (move_to_front(window)) window->raise();
}

void window_list::note_focus(text_window* window) { move_to_front(window); }

void window_list::refresh_all() {
  for (text_window* window : from_front())
    if (contains(window)) window->refresh();
}

void window_list::refresh_kind(int kind) {
  for (text_window* window : from_front())
    if (window->kind() == kind && contains(window)) window->refresh();
}

}  // namespace vantor::ui
