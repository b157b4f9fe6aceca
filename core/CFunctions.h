/**
 * The C interface of Tarsel: the calls by which a program in C, or in any language that can call C,
 * works with the shots of an experiment. This header needs no other; it is plain C11, and C++.
 *
 * A session runs like this: InitializeTarselC with the install folder, SetExperimentC with an
 * experiment folder, SetShotC or CreateShotC, and then any calls on the shot's fields, scalars and
 * data. There is no closing call.
 *
 * Conventions
 *
 * 1. One thread. The library keeps one experiment and one current shot per process. Calls must not
 *    overlap.
 * 2. Text goes in as a zero-terminated string of bytes, which is copied at once. A null pointer
 *    counts as an empty string.
 * 3. Text comes out into a buffer of the caller's. On entry *length is the room in the buffer, on
 *    return the number of bytes written there. NO TERMINATOR IS WRITTEN: go by *length. A longer
 *    result is cut to the room, and nothing tells that it was cut. A room below 0, or a null
 *    buffer, counts as no room.
 * 4. Arrays belong to the caller, who sizes them. The library keeps no pointer to anything that it
 *    is given, and never returns a pointer to memory of its own.
 * 5. Numbers are int and single-precision float. A scalar that can't be evaluated is -3.3e38;
 *    values of 9.9e34 and beyond, to either side, are never valid results.
 * 6. Calls that can fail in a way the caller should know of return 1 for success and 0 for failure.
 *    What there is to say about a failure is printed on standard output. The others do nothing
 *    where they can't do their work.
 * 7. Nothing throws, aborts or exits. Where memory is refused, a call does nothing or fails, and a
 *    file that it writes is as before or whole.
 *
 * Not supported: several experiments at once, several threads, and being told that a result was
 * cut.
 */
#ifndef TARSEL_CORE_CFUNCTIONS_H
#define TARSEL_CORE_CFUNCTIONS_H

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The library ----------------------------------------------------------------------------- */

/**
 * Starts a session. `path` is the install folder; "$L" behind it (in either case) switches verbose
 * logging on. Settings and the log are kept in the folder .Tarsel in the home folder. A relative
 * path is taken from the current directory.
 *
 * A second call with the same path, in any case, changes nothing. One with another path starts
 * anew: the log is begun again and the sinks are reset; the experiment stays. So does a repeated
 * relative path, since it is kept as the absolute one. An empty path stands for the folder of the
 * running program, but before any other path it counts as a repeat.
 */
void InitializeTarselC(const char* path);

/** Returns 316 and touches nothing: the library is loaded and can be called. */
int TestFuncC(void);

/** Sleeps; a negative time returns at once. */
void CSleep(int milliseconds);

/**
 * Sends a notification to the sink in place. After InitializeTarselC: type 2 prints `text` on
 * standard output, with a line feed unless it ends in one; type 5 writes it to the log; type 11
 * hands it as a macro to the plug-in module Calculation in the install folder; other types and
 * empty texts are dropped. `value` isn't used there. Before any start the text of every type is
 * printed.
 */
void NotifyC(int type, int value, const char* text);

/* ---- The session ----------------------------------------------------------------------------- */

/**
 * One of the session's strings, by convention 3:
 *
 *   0   the install folder
 *   1   the current shot's name
 *   2   the current shot's folder
 *   3   the experiment folder
 *   4   the user's settings folder
 *   5   the file MPIHosts.txt in that folder
 *   6   the experiment's name
 *   99  "Test string from Tarsel", to check the handling of buffers
 *
 * Any other selector gives an empty string.
 */
void GetStringC(int selector, int* length, char* buffer);

/**
 * Writes the names of the computing nodes, from the section Nodes of the main settings
 * (this computer's where there is none), to the file
 * MPIHosts.txt in the user's settings folder, repeated in turn up to `count` if that is more than
 * there are. Returns `count`.
 */
int GetNodesC(int count);

/**
 * Opens an experiment folder, creating what is missing of it. No shot is selected then. Does
 * nothing before InitializeTarselC.
 */
void SetExperimentC(const char* folder);

/**
 * Creates a shot and selects it. If the shot exists, the call fails with a message, unless the name
 * has "*" in front, or "\" and a data name behind it under which the shot holds no trace yet. The
 * name "*" alone stands for the current directory's name, without "Shot" in front. Returns 1 or 0.
 */
int CreateShotC(const char* name);

/**
 * Selects a shot by its name; a group's folder name and "/" may stand in front. Returns 1, or 0
 * with a message if there is no such shot; the selection then stays.
 */
int SetShotC(const char* name);

/**
 * A field of the current shot as text, by convention 3; empty if there is none. "a::b" gives the
 * field b where a is empty.
 */
void GetStringDataC(const char* name, int* length, char* buffer);

/** Sets a field of the current shot; an empty value deletes it. */
void SetStringDataC(const char* name, const char* value);

/* ---- Scalars --------------------------------------------------------------------------------- */

/**
 * A field, or an expression over fields and data of the current shot, as a number: "Charge*2",
 * "I\mx" (the greatest value of the trace I), "bol(Valid)". -3.3e38 if it can't be evaluated.
 * docs/expressions.md of the project tells the language.
 */
float GetScalarDataC(const char* name);

/**
 * With a room below 60 (*length on entry): the number that GetScalarDataC gives for `text`, as
 * text.
 *
 * With a room of 60 or more `text` is a template: what stands in braces, as in
 * "peak {![Trace]\mx*2} A", is replaced by its value. If that isn't valid, the whole result is
 * "Error evaluating scalar expression " and the expression. A template without braces comes back as
 * it stands. Use one pair of braces: behind the first, the search goes on for a closing brace, so
 * that in "a{x}b{y}c" the part "b{y" comes through as plain text and "c" is taken for an
 * expression.
 */
void GetScalarDataSafeC(const char* text, int* length, char* buffer);

/**
 * Sets a field of the current shot to a number, or with a name of the form "trace\t1" one of the
 * twelve numbers (t1 to t9, ta, tb, tc) that are stored with a trace; where there is no trace of
 * that name, one of the five (t1 to t5) that are stored with a matrix. Any other name with a
 * backslash does nothing.
 */
void SetScalarDataC(const char* name, float value);

/* ---- Traces -----------------------------------------------------------------------------------
 *
 * A data name is the name of a file in the current shot, without suffix, or "shot\name" for one in
 * another shot. Times and values have no units for the library. Sample k of a trace lies at the
 * time start + k * step. A data name of an unknown shot reads nothing and writes nothing.
 */

/** The number of points, start time and sampling interval; 0, 0 and 1 for a missing trace. */
void GetWaveformInfoC(const char* name, int* points, float* start, float* step);

/**
 * A trace on a time base of the caller's: `points` values from the time `start` on, `step` apart,
 * interpolated linearly, and 0 outside the trace. A `step` of 0 or below keeps the trace's own
 * interval and takes its samples from the one at or before `start` on. `data` has room for `points`
 * values; all of them are written, zeros for a missing trace.
 */
void GetWaveformC(const char* name, float start, float step, int points, float* data);

/** Stores `points` values of `data` as a trace. */
void SetWaveformC(const char* name, float start, float step, int points, const float* data);

/**
 * Stores a trace given as `points` pairs of time and value in `xy`. The time base is that of the
 * first and the last pair; times between them aren't looked at, so uneven spacing is lost. Fewer
 * than 2 points do nothing.
 */
void SetWaveformXYC(const char* name, int points, const float* xy);

/* ---- Matrices --------------------------------------------------------------------------------
 *
 * Values on a grid of rows, columns and layers; the number of a dimension is 1, 2 or 3 in this
 * order. The values of a matrix of n1 by n2 by n3 run with the row fastest and the layer slowest. A
 * matrix without layers has n3 = 1.
 */

/**
 * Size, first coordinate and step of each axis. The step is (last - first) / (size - 1), so it is
 * no number for an axis of one point. A missing matrix is 1 by 1 by 1.
 */
void GetMatrixInfoC(const char* name, int* n1, float* start1, float* step1, int* n2, float* start2,
                    float* step2, int* n3, float* start3, float* step3);

/**
 * The n1 * n2 * n3 values of a matrix. If one of the sizes isn't that of the matrix, nothing is
 * copied, and nothing tells so.
 */
void GetMatrixC(const char* name, int n1, int n2, int n3, float* data);

/** Stores n1 * n2 * n3 values of `data` as a matrix on evenly spaced axes. */
void SetMatrixC(const char* name, int n1, int n2, int n3, const float* data, float start1,
                float step1, float start2, float step2, float start3, float step3);

/* ---- Particle groups --------------------------------------------------------------------------
 *
 * A particle is 8 floats: position, vector, and two more that are stored only. `geometry` tells the
 * coordinates of position and vector: 0 for x, y, z, any other value for radius, angle, z. `first`
 * and `second` are two numbers that belong to the group.
 */

/** The particles in the file, their coordinates, and the group's numbers; zeros for a missing one.
 */
void GetPGroupInfoC(const char* name, int* total, int* geometry, float* second, float* first);

/**
 * Reads particles from particle `start` on. *count is how many are wanted, negative for all (from
 * the first on, at most 10,000,000); on return it is how many were read. `data` has room for 8
 * floats each. A `start` of -77 reads from the first particle on and converts to x, y, z.
 */
void GetPGroupC(const char* name, int* count, int start, float* data);

/** Stores `count` particles of `data` as a group; they are in the stated coordinates already. */
void SetPGroupC(const char* name, int count, int geometry, const float* data, float second,
                float first);

/**
 * Adds particles to the end of a group's file, or stores them as a new one. The file keeps its
 * coordinates and numbers; those given here count only for a new one.
 */
void AppendPGroupC(const char* name, int count, int geometry, const float* data, float second,
                   float first);

#ifdef __cplusplus
}

class DString;

/** A string result: cuts `text` to `length`, sets `length` to what remains, and copies it. */
void StringArgs(DString& text, int& length, char* buffer);
#endif

#endif
