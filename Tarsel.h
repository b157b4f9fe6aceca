/// The whole class interface of Tarsel in one include, for hosts and plug-ins in C++20. A program
/// in C includes core/CFunctions.h instead.
#pragma once

#ifndef __cplusplus
#error "Tarsel.h is the C++ interface; a C program includes core/CFunctions.h"
#endif

#include "core/CFunctions.h"
#include "core/CoreGlobal.h"
#include "core/TarselIDL.h"
#include "data/DataPtr.h"
#include "data/Geometry.h"
#include "data/Matrix.h"
#include "data/ParticleGroup.h"
#include "data/Waveform.h"
#include "experiment/Experiment.h"
#include "system/DFile.h"
#include "system/DIni.h"
#include "system/DLLConnect.h"
#include "system/DLibrary.h"
#include "system/DSystem.h"
#include "types/DArray.h"
#include "types/DString.h"
#include "types/DStringArray.h"
#include "types/MemoryWatch.h"
