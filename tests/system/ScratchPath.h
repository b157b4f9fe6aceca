/// Paths below the scratch folder as the library takes them.
#pragma once

#include <string>

#include "support/Support.h"
#include "types/DString.h"

inline DString ScratchPath(const std::string& name) { return DString(Scratch(name).c_str()); }
