/// Dying on purpose, to see what survives.
#pragma once

#include <string_view>

namespace pedvar {

#ifdef PEDVAR_FAULT_POINTS
/// Kills the process the n-th time that it comes to `name`, if the environment holds PEDVAR_FAULT_AT="name:n".
void faultPoint(std::string_view name);
#else
inline void faultPoint(std::string_view) {}
#endif

}  // namespace pedvar
