// The texts of the run-time library's numbered errors. docs/runtime-errors.md lists the same
// rows for the library's authors; a unit test keeps the two in step.
#include "process/runtime_errors.h"

#include "common/runtime_error_numbers.h"

namespace vantor {

const runtime_error_row RuntimeErrorRows[] = {
    {0, "Undefined error"},

    // ---- arithmetic ----
    {1, "Floating point arithmetic overflow"},
    {2, "Integer arithmetic overflow"},
    {3, "Floating point division by zero"},
    {4, "Integer division by zero"},
    {5, "Floating point underflow"},
    {6, "Invalid floating point operation"},
    {7, "Square root of a negative number"},
    {8, "Logarithm of zero or of a negative number"},
    {9, "Zero raised to a negative or zero power"},
    {10, "Negative number raised to a real power"},

    // ---- the checks compiled into programs ----
    {kRuntimeErrorSubscript, "Array subscript out of bounds"},
    {kRuntimeErrorSubstring, "Substring out of bounds"},
    {13, "Array shapes do not conform"},
    {kRuntimeErrorZeroIncrement, "DO-loop has zero increment"},
    {kRuntimeErrorCharRange, "Argument to CHAR outside range 0 - 255"},
    {kRuntimeErrorAlreadyAllocated, "ALLOCATABLE array is already allocated"},
    {kRuntimeErrorNotAllocated, "ALLOCATABLE array is not allocated"},
    {kRuntimeErrorNoMemory, "Out of memory in ALLOCATE"},

    // ---- control flow and calls ----
    {19, "Attempt to execute invalid assigned GOTO"},
    {20, "Assigned label is not in the list of the GOTO"},
    {21, "Inconsistent call to routine"},
    {22, "Recursive call to a routine not declared RECURSIVE"},
    {23, "Wrong number of arguments in call"},
    {24, "Actual argument type does not match the dummy argument"},
    {25, "Constant or expression passed to an argument that is changed"},
    {26, "Function result was never set"},
    {27, "Optional argument not present"},
    {28, "Alternate return label out of range"},
    {kRuntimeErrorMissingRoutine, "Call to missing routine"},
    {30, "Too many nested routine calls"},

    // ---- intrinsic procedures ----
    {31, "Argument of ASIN or ACOS outside range -1 to 1"},
    {32, "Both arguments of ATAN2 are zero"},
    {33, "Argument of EXP too large"},
    {34, "Real value too large for conversion to integer"},
    {35, "Second argument of MOD or MODULO is zero"},
    {36, "Complex division by zero"},
    {37, "Shift count outside range in ISHFT or ISHFTC"},
    {38, "Bit position outside range in IBSET, IBCLR or BTEST"},
    {39, "Invalid argument to an intrinsic function"},

    // ---- arrays and character values ----
    {40, "Array section out of range"},
    {41, "Array bounds inconsistent in declaration"},
    {42, "Actual array argument smaller than the dummy array"},
    {43, "Size of an assumed-size array is not known"},
    {44, "Vector subscript with a repeated value on the left of an assignment"},
    {45, "Overlapping actual arguments are both changed"},
    {46, "Character argument shorter than the dummy argument"},
    {47, "Negative character length"},
    {48, "Argument of ICHAR or IACHAR is not one character long"},
    {49, "RESHAPE source has too few elements"},
    {50, "Array constructor has the wrong number of elements"},
    {51, "DIM argument out of range"},

    // ---- pointers and allocation ----
    {70, "Reference through a pointer that is not associated"},
    {71, "Reference through a pointer whose target no longer exists"},
    {72, "Reference to an array that is not allocated"},
    {73, "Deallocation of a pointer not created by ALLOCATE"},
    {74, "Deallocation of part of an allocated object"},
    {75, "Allocatable dummy argument is not allocated"},

    // ---- undefined values (checking mode) ----
    {100, "Reference to an undefined variable, array element or function result"},
    {101, "Undefined DO-loop control value"},
    {102, "Undefined array subscript"},
    {103, "Undefined argument to an intrinsic function"},
    {104, "Undefined character length"},
    {105, "Undefined logical value"},

    // ---- input and output ----
    {150, "File not found"},
    {151, "File already exists"},
    {152, "Unit number out of range"},
    {153, "Unit is not connected"},
    {154, "Unit is already connected to another file"},
    {155, "File is already connected to another unit"},
    {156, "Invalid STATUS= specifier"},
    {157, "Invalid ACCESS= specifier"},
    {158, "Invalid FORM= specifier"},
    {159, "Invalid ACTION= specifier"},
    {160, "Invalid POSITION= specifier"},
    {161, "Invalid BLANK= specifier"},
    {162, "Invalid DELIM= specifier"},
    {163, "Invalid PAD= specifier"},
    {164, "RECL= is required for direct access"},
    {165, "Record length exceeded"},
    {166, "Record number out of range"},
    {167, "End of file"},
    {168, "End of record"},
    {169, "Read after end of file"},
    {170, "Write after the end-of-file record"},
    {171, "Direct access to a sequential file"},
    {172, "Sequential access to a direct access file"},
    {173, "Formatted transfer on an unformatted unit"},
    {174, "Unformatted transfer on a formatted unit"},
    {175, "Invalid character in numeric input"},
    {176, "Numeric input value out of range for its type"},
    {177, "Invalid logical value in input"},
    {178, "Error in format specification"},
    {179, "Format has no data edit descriptor for an item"},
    {180, "Edit descriptor does not match the type of the item"},
    {181, "Repeat count must be positive"},
    {182, "Unexpected character in list-directed input"},
    {183, "Namelist group name not found in input"},
    {184, "Name is not in the namelist group"},
    {185, "Internal file overflow"},
    {186, "Write to a file opened for reading only"},
    {187, "Read from a file opened for writing only"},
    {188, "Permission denied"},
    {189, "Disk full"},
    {190, "BACKSPACE is not allowed on this unit"},
    {191, "REWIND is not allowed on this unit"},
    {192, "Too many open files"},
    {193, "File name too long"},
    {194, "A scratch file cannot be given a name"},
    {195, "Non-advancing transfer with list-directed or namelist formatting"},
    {196, "SIZE= requires ADVANCE='NO'"},
    {197, "Recursive input/output on a unit"},
    {198, "Invalid ADVANCE= specifier"},
    {199, "Input/output error"},

    // ---- program termination and the system ----
    {300, "STOP statement in a pure or elemental routine"},
    {301, "Program stopped by the user"},
    {302, "Floating point exception in the run-time library"},
    {303, "Internal error in the run-time library"},
    {kRuntimeErrorMessage, "Message from the program"},
    {400, "Stack overflow"},
    {401, "Not enough memory"},
    {402, "Heap corruption detected"},
    {403, "Invalid handle passed to the run-time library"},
    {404, "Too many threads"},
    {447, "Unknown run-time failure"},
};

const std::size_t RuntimeErrorRowCount = sizeof RuntimeErrorRows / sizeof RuntimeErrorRows[0];

}  // namespace vantor
