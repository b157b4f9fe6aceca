/* Compiles if the C header stands by itself, and may be included twice. */
#include "core/CFunctions.h"
