// The kind number of every window of the debugger. The window list is searched by kind
// ("the first open source window"), and the main loop refreshes windows by kind.
#pragma once

namespace vantor::ui {

enum WindowKind : int {
  kSourceKind = 1,
  kStackKind = 2,
  kVariablesKind = 3,
  kRegistersKind = 4,
  kDumpKind = 5,
  kInspectorKind = 6,
  kAssemblerKind = 7,
  kArrayKind = 8,
  kStructureKind = 9,
  kFindKind = 10,
  kModulesKind = 11,
  kCommonBlocksKind = 12,
  kBreakpointsKind = 13,
  kStreamsKind = 15,
  kWatchesKind = 17,
};

}  // namespace vantor::ui
