#include "support/fake_target.h"

namespace vantor::os {
// Defined in os/system.cpp; declared here to read the current layer without asserting.
System* current_system_or_null();
}  // namespace vantor::os

namespace vantor::testing {
os::System* FakeTarget::current() { return os::current_system_or_null(); }
}  // namespace vantor::testing
