#include "winlib/window_library.h"

#include "winlib/headless_library.h"

namespace vantor::winlib {

bool ModalDialogActive = false;

namespace {
HeadlessLibrary headless;
WindowLibrary* current_library = nullptr;
}  // namespace

WindowLibrary& window_library() { return current_library ? *current_library : headless; }
void set_window_library(WindowLibrary* library) { current_library = library; }

}  // namespace vantor::winlib
