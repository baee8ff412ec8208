// Conversions between the platform's x64 CONTEXT record and the debugger's ThreadContext.
// The named fields are what the debugger reads and changes; the whole record travels in
// ThreadContext::native so that storing a context back loses nothing.
#pragma once

#include <windows.h>

#include "os/os.h"

namespace vantor::os {

static_assert(sizeof(CONTEXT) <= sizeof(ThreadContext::native), "ThreadContext::native must hold a CONTEXT");

void context_from_native(const CONTEXT& native, ThreadContext& context);
// Starts from the saved native record when there is one, then writes the named fields over it.
void native_from_context(const ThreadContext& context, CONTEXT& native);

}  // namespace vantor::os
