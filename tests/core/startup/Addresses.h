/// Where a module of this process finds the library's constants, flags and objects.
#pragma once

#include <array>

#include "core/CoreGlobal.h"
#include "experiment/Experiment.h"
#include "system/DIni.h"

using Addresses = std::array<const void*, 15>;

inline Addresses AddressesHere() {
    return {&npos,    &DFMax,     &pi,           &LenLD,       &LDelim,
            &DEmpty,  LDelim,     &DEmptyString, DEmptyString, &MaxParticleBatch,
            &Logging, &SheetData, &TrIni,        &Expt,        &QNot};
}

/// The same, as the plug-in sees it.
extern "C" void PlugInAddresses(Addresses& result);
