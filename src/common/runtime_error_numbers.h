/* Numbers of the run-time errors that compiled Fortran programs raise with the int 9 trap
   (RCX = number, RDX = routine name for 29, message text for 345, else 0). Shared by the
   test compiler, its run-time library (C) and the debugger's message table: plain C. */
#ifndef VANTOR_COMMON_RUNTIME_ERROR_NUMBERS_H
#define VANTOR_COMMON_RUNTIME_ERROR_NUMBERS_H

enum RuntimeErrorNumber {
  kRuntimeErrorSubscript = 11,         /* "Array subscript out of bounds" */
  kRuntimeErrorSubstring = 12,         /* "Substring out of bounds" */
  kRuntimeErrorZeroIncrement = 14,     /* "DO-loop has zero increment" */
  kRuntimeErrorCharRange = 15,         /* "Argument to CHAR outside range 0 - 255" */
  kRuntimeErrorAlreadyAllocated = 16,  /* "ALLOCATABLE array is already allocated" */
  kRuntimeErrorNotAllocated = 17,      /* "ALLOCATABLE array is not allocated" */
  kRuntimeErrorNoMemory = 18,          /* "Out of memory in ALLOCATE" */
  kRuntimeErrorMissingRoutine = 29,    /* "Call to missing routine: %s" */
  kRuntimeErrorMessage = 345           /* the text itself, e.g. STOP 'text' */
};

#endif
