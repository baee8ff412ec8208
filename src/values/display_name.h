// The names users wrote, from the names the compilers stored in the debug information.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantor {

// By language code: 0 the name as it is; 1 and 4 the name without a trailing "__C";
// 3 the undecorated Fortran name; nothing for any other code.
std::optional<std::string> display_name(std::string_view decorated, std::int32_t lang_code);

// The decorations of the language-3 Fortran compiler are lower case and user names upper
// case: "program" is the main program "MAIN@", "struct programdt_POINT" the derived type
// "TYPE POINT", and scope prefixes ("mp_", "ip_", "dt_", "var_") become ":".
std::string undecorate_fortran_name(std::string_view decorated);

}  // namespace vantor
