// The window library as the rest of the debugger sees it. Only src/winlib/win32 talks to
// the library itself; everything above asks this interface, so that the window models,
// the settings and the commands run unchanged in console sessions and native tests.
//
// Sizes and positions of windows are in the library's character units unless a name
// says pixels.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor::ui {
class text_window;
}

namespace vantor::winlib {

// Buttons of the program dialog.
constexpr int kDialogOk = 1;
constexpr int kDialogCancel = 2;
constexpr int kDialogBrowse = 3;

struct PixelSize {
  int width = 0;
  int height = 0;
};

// A window's place as the library reports it, in character units.
struct WindowLocation {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

// The on-screen form of one text window. The model owns it and tells it when to redraw;
// the view reads the model's rows, its first visible row and its selected row.
class WindowView {
 public:
  virtual ~WindowView() = default;
  // The model's rows, title, status or selection changed.
  virtual void redraw() = 0;
  virtual void bring_to_front() = 0;
  // Where the user has put the window now; nullopt when the library cannot tell.
  virtual std::optional<WindowLocation> location() = 0;
};

class WindowLibrary {
 public:
  virtual ~WindowLibrary() = default;

  // A value the library keeps by name ("PIXELS_PER_H_UNIT", "PIXELS_PER_V_UNIT", ...);
  // 0 for a name it does not know.
  virtual std::int64_t info(const std::string& name) = 0;
  // The main window's client area and the whole screen, in pixels.
  virtual PixelSize main_client_size() = 0;
  virtual PixelSize screen_size() = 0;

  // Puts a text window on screen at its location. Null when the session shows no
  // windows: the model then lives on without a view (console sessions, off-screen
  // windows of "dprint", tests).
  virtual std::unique_ptr<WindowView> open_view(ui::text_window& window) = 0;

  // The small modal prompts: a caption, a question, and an answer field placed at (x, y)
  // with the given width. Nullopt when the user cancels (or no one can answer).
  virtual std::optional<long> prompt_number(const std::string& caption, const std::string& question, int x, int y,
                                            int width) = 0;
  virtual std::optional<std::string> prompt_text(const std::string& caption, const std::string& question, int x,
                                                 int y, int width) = 0;

  // ---- the session's share of the library ----
  // The defaults below are those of a session without windows; the windowed library
  // overrides them all.

  // Lets the library handle pending messages and callbacks; a callback may queue a run
  // command or press the waiting window's Pause.
  virtual void yield_program_control() {}

  // Once per pass of the main loop, after the yield: the library's own upkeep of the list
  // of open windows.
  virtual void refresh_window_list() {}

  // The main frame window. Closing clears its open state and updates it; nothing happens
  // when there is none.
  virtual void build_main_window() {}
  virtual bool main_window_exists() const { return false; }
  virtual void close_main_window() {}
  // Closes the main window and builds it again with every child window handed back to the
  // new frame (after changes that only a new frame can show).
  virtual void rebuild_main_window() {}
  // Appended to the main window's caption: the program's name, once, when the main loop
  // starts; a window built later carries it too.
  virtual void append_to_main_caption(const std::string& text) { (void)text; }

  // Start-up's "Program to debug" dialog over `edit_text` (the command line typed so far,
  // changed in place); returns kDialogOk, kDialogCancel (also for Esc) or kDialogBrowse.
  // Without windows nobody can answer: Cancel.
  virtual int program_dialog(std::string& edit_text) {
    (void)edit_text;
    return kDialogCancel;
  }
  // The open-file dialog behind Browse, preset to `initial_name`; nullopt when cancelled.
  virtual std::optional<std::wstring> browse_for_program(const std::wstring& initial_name) {
    (void)initial_name;
    return std::nullopt;
  }

  // The small window shown while the program has run for a while, offering Pause;
  // `on_pause` runs when it is pressed. Closing it when it is not up does nothing.
  virtual void show_waiting_window(std::function<void()> on_pause) { (void)on_pause; }
  virtual void close_waiting_window() {}

  // The modal Command dialog: an edit list pre-filled with `initial_text` whose list holds
  // `history` (newest first); its Help button opens the help page for commands. The text
  // entered, or nullopt for Cancel and Escape. Without windows nobody can answer.
  virtual std::optional<std::string> command_dialog(const std::string& initial_text,
                                                    const std::vector<std::string>& history) {
    (void)initial_text;
    (void)history;
    return std::nullopt;
  }
};

// True while one of the debugger's modal dialogs is up: nothing may start a command then.
extern bool ModalDialogActive;

// The library of the session: the one installed by the entry point, or the headless one
// when none is (console sessions and tests).
WindowLibrary& window_library();
void set_window_library(WindowLibrary* library);

}  // namespace vantor::winlib
