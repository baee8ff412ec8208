#include "debuginfo/module.h"

namespace vantor {

Module::~Module() = default;

}  // namespace vantor
