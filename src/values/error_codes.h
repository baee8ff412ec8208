// The error codes that an element can carry, and their texts. Code 0 means no error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantor {

enum ErrorCode : std::int32_t {
  kErrorNone = 0,
  kErrorNullPointer = 1,
  kErrorIllegalPointer = 2,
  kErrorInvalidReal = 3,
  kErrorSyntax = 4,
  kErrorBadConstant = 5,
  kErrorTooManyClosing = 6,
  kErrorBracketMismatch = 7,
  kErrorAddPointers = 8,
  kErrorAddNonInteger = 9,
  kErrorNoArithmetic = 10,
  kErrorUnknownVariable = 11,
  kErrorVoidPointerArithmetic = 12,
  kErrorSubtractNonInteger = 13,
  kErrorPointerTypes = 14,
  kErrorOverflow = 15,
  kErrorUnderflow = 16,
  kErrorDivisionByZero = 17,
  kErrorTooManyOpening = 18,
  kErrorPointerRequired = 19,
  kErrorVoidDereference = 20,
  kErrorIntegersRequired = 21,
  kErrorNoAddress = 22,
  kErrorMemberNameExpected = 23,
  kErrorStructureExpected = 24,
  kErrorMemberNotFound = 25,
  kErrorStructurePointerExpected = 26,
  kErrorArrayExpected = 27,
  kErrorSubscriptNotInteger = 28,
  kErrorTooManySubscripts = 29,
  kErrorNoObject = 30,
  kErrorPointerNotAssigned = 31,
  kErrorSubscriptOutOfBounds = 32,
  kErrorNotAllocated = 33,
  kErrorOutOfScope = 34,
  kErrorTypesIncompatible = 35,
  kErrorStringExpected = 36,
  kErrorUnsetPointer = 37,
  kErrorUntouchedCommon = 38,
  kErrorInternal = 39,
  kErrorCodeCount = 40,
};

// Copies the text of `code` ("Illegal error %d" from 40 up) into buffer, cut to `length`
// and always terminated.
void error_text(std::int32_t code, char* buffer, std::size_t length);
std::string error_text(std::int32_t code);

}  // namespace vantor
