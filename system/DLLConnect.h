/// Connecting a plug-in module to its host.
#pragma once

#include "core/CoreGlobal.h"

/// Loads the module whose path below the install folder is `module` ("lib" and ".so" are put around
/// its last element) and calls its entry, which has C linkage:
///
///   int TvInit(int value, DNotify* sink, DNotify*& returned);
///
/// `value` and `sink` are handed on as they are; the module may hand a sink of its own back.
/// Returns what the entry returns, or 0, with a message, if the module or its entry can't be found.
int DLLConnect(DString const& module, int value, DNotify* sink, DNotify*& returned);
