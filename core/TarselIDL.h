/**
 * The IDL interface of Tarsel: the calls by which a program in the IDL language works with the
 * shots of an experiment, through CALL_EXTERNAL. This header needs no other; it is plain C11, and
 * C++.
 *
 * Conventions
 *
 * 1. Every call has the form int Name(int argc, void* argv[]), and returns 0 for success and -1 for
 *    failure. What there is to say about a failure is printed on standard output.
 * 2. With any other number of arguments than the call's own, or with a null pointer for a number or
 *    an array, a call does nothing and returns -1 without a word.
 * 3. A text stands in argv itself, as a pointer to zero-terminated bytes; a null pointer counts
 *    as an empty text. In CALL_EXTERNAL that is a string passed by value.
 * 4. A number is a pointer to a 32-bit int or a single-precision float, in or out; an array is a
 *    pointer to single-precision floats that the caller owns and sizes. In CALL_EXTERNAL both are
 *    passed by reference.
 * 5. The library keeps one experiment and one current shot per process, keeps no pointer that it is
 *    given, and is called on one thread.
 */
#ifndef TARSEL_CORE_TARSELIDL_H
#define TARSEL_CORE_TARSELIDL_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Install folder, experiment folder (2 arguments): starts a session and opens the experiment,
 * creating what is missing of it. Each call starts anew, also one with the same folders.
 */
int InitializeTarselIDL(int argc, void* argv[]);

/**
 * Shot name (1): creates a shot, stamps it with the date and selects it. Fails with a message if it
 * exists, unless the name has "*" in front, or "\" and a data name behind it under which the shot
 * holds no trace yet.
 */
int CreateShotIDL(int argc, void* argv[]);

/** Shot name (1): selects a shot. Fails with a message if there is none of that name. */
int SetShotIDL(int argc, void* argv[]);

/** Name, float value (2): sets a field, or a number stored with a trace, as SetScalarDataC does. */
int SetScalarIDL(int argc, void* argv[]);

/**
 * Name, float result (2): a field or an expression as a number, as GetScalarDataC gives it; -3.3e38
 * if it can't be evaluated.
 */
int GetScalarIDL(int argc, void* argv[]);

/**
 * Data name, float start, float step, int points (4), the last three out: what a trace's header
 * tells. Fails with a message if the trace is missing or has no points; the values are set all the
 * same, to 0, 1 and 0 for a missing one.
 */
int GetWaveformInfoIDL(int argc, void* argv[]);

/**
 * Data name, float start, float step, int points, float array (5), the array out, with room for
 * `points` values: a trace on this time base, as GetWaveformC gives it. Fails with a message if the
 * trace is missing or has no points; the array then stays as it was.
 */
int GetWaveformIDL(int argc, void* argv[]);

/**
 * Data name, float start, float step, int points, float array (5): stores a trace. Succeeds
 * whatever happens to the file.
 */
int SetWaveformIDL(int argc, void* argv[]);

#ifdef __cplusplus
}
#endif

#endif
