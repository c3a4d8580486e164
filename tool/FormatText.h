#pragma once

#include <string>

#include "korvat/base/Value.h"
#include "korvat/format/Format.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat::tool {

// A value of `type`, as decode gives it, the way a display format of that type shows it.
//
//   %d %i %u     the number; %x %X %o in hexadecimal and octal, negative ones as 32 bits
//   %f %e %g     the number: as short as it is exact, or with the precision given. A unit follows
//   %c           the character with that code
//   %s %m        the text, the name of the enumerator
//   %%, \n, \"   the character itself
//   date(), time()   2026-11-21 and 07:05:00.250, each as far as there are parts
//
// A condition asks for the number in a member's own unit. A unit also follows a format's value
// itself, when that is a number. Flags, width (up to 100) and
// precision (up to 20) are those of C. A conversion without a member stays as it stands. Throws
// Failure when the format shows a member that the value does not have.
std::string renderText(TypeManager& manager, const VarType& type, const Format& format,
                       const json::Value& value);

}  // namespace zavri::korvat::tool
