/// For the targets that read settings documents: the library waits for an empty one to be filled by
/// another process, and here there is none. Included by one source of a program.
#pragma once

#include <unistd.h>

extern "C" int usleep(useconds_t) { return 0; }
