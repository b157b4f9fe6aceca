/// The order in which the library's static objects are made at load. Internal to the library.
///
/// The constructors of different source files have no order in C++ itself. Each static object with
/// a constructor therefore names its step; steps run in ascending order, the objects of one file in
/// the order in which they stand there, and all die in the reverse order at exit.
#pragma once

#define TARSEL_START_UP(step) __attribute__((init_priority(step)))

// The implementation keeps priorities up to 100 for itself.
#define TARSEL_START_CORE_GLOBAL 1001  // TrIni, Expt, SheetData
#define TARSEL_START_DLIBRARY 1002     // DLib
#define TARSEL_START_DSYSTEM 1003      // the paths and the computer's name
#define TARSEL_START_PARSER 1004       // the evaluator's byte sets
