/// How the C and the IDL calls read traces. Internal to the library.
#pragma once

class Waveform;

/// Reads a trace of the current shot; one whose name leads to no file stays as it was made.
void ReadWaveform(const char* name, int points, Waveform& waveform);

/// Puts a trace on a caller's time base and copies it to `data`, which has room for `points`
/// values; all of them are written.
void CopyAligned(Waveform& waveform, float start, float step, int points, float* data);
