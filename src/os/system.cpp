#include "os/os.h"

namespace vantor::os {

namespace {
System* current_system = nullptr;
}

System& system() { return *current_system; }
void set_system(System* system) { current_system = system; }
System* current_system_or_null() { return current_system; }

}  // namespace vantor::os
