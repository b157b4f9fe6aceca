// A module that is loaded at run time and tells where it finds the library's constants and flags.
#include "core/startup/Addresses.h"

extern "C" void PlugInAddresses(Addresses& result) { result = AddressesHere(); }
