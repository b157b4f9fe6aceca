/// Waveform: a trace of single-precision samples taken at equal time intervals, with the header
/// that an acquisition system keeps beside such a trace, and what is computed from the two. A shot
/// folder holds one .wvf file per trace; docs/formats.md describes it.
///
/// The samples are one row of the base array. Sample k, counted from 0, was taken at
/// StartTime() + k * m_TimePerPoint. The library attaches no units to times or values.
///
/// m_Max, m_Min, their indexes and m_ScaleUnit hold what the file held or what the last Scale
/// found. No other operation keeps them up to date, and the measurements rely on them as they
/// stand: a trace that is built in memory needs Scale first. Wrong indexes lead to wrong results,
/// but never out of the samples.
#pragma once

#include "types/DArray.h"
#include "types/DString.h"

class DFile;

class Waveform : public DArray<float> {
public:
    float m_TimePerPoint = 1.0f;  ///< sampling interval
    float m_TimeShift = 0.0f;     ///< first term of the start time; Align clears it
    float m_InitialStart = 0.0f;  ///< second term; where a caller puts its start time
    float m_ScaleUnit = 1.0f;     ///< decimal step size that fits the range of the values
    float m_Params[12] = {};      ///< free numbers, stored, copied and reported only
    float m_ScopePT = 0.0f;       ///< scope setting, third term of the start time
    float m_ScopeSV = 0.0f;       ///< scope setting
    float m_ScopeX = 0.0f;        ///< scope setting
    float m_ScopeY = 0.0f;        ///< scope setting
    float m_ScopeTD = 0.0f;       ///< scope setting, fourth term of the start time
    DString m_Label;              ///< free text
    DString m_Date;               ///< time of the last write, as Now gives it
    DString m_Note;               ///< free text
    int m_HeaderPoints;           ///< points that the file's header announces, not the samples held
    int m_Flags = 0;              ///< lock control; see Write
    float m_Atten = 1.0f;         ///< attenuation
    float m_Calib = 1.0f;         ///< calibration
    float m_Baseline = 0.0f;      ///< baseline offset, before calibration and attenuation
    float m_Max = 0.0f;           ///< greatest sample
    float m_Min = 0.0f;           ///< least sample
    int m_MaxIndex = 0;           ///< index of the greatest sample plus one; 0 for none
    int m_MinIndex = 0;           ///< index of the least sample plus one; 0 for none

    /// `n` samples of 0; a negative `n` counts as 0. m_HeaderPoints takes the same number.
    explicit Waveform(int n = 0);
    /// Copy samples and header but for m_Flags: a new object has 0 there, an existing one keeps its
    /// own.
    Waveform(Waveform const& other);
    Waveform& operator=(Waveform const& other);
    ~Waveform() override;

    // ---- The record

    /// Time of the first sample: m_TimeShift + m_InitialStart + m_ScopePT + m_ScopeTD.
    float StartTime() const;
    /// Copies every field but m_Flags, and no samples.
    void CopyHeader(Waveform const& other);
    /// Makes this a trace of zeros with the length, interval and start time of `other`, and zero in
    /// its own scope fields and baseline. Takes m_Params if `copyParams`, m_Atten and m_Calib if
    /// `copyCalib`. All else stays. Nothing happens with the object itself as `other`.
    Waveform& InitFrom(Waveform const& other, bool copyParams, bool copyCalib);
    /// Sets the samples to 0.
    void Zero();
    /// Moves the scope's terms of the start time into m_InitialStart and sets the scope fields and
    /// the baseline to 0. The start time stays but for rounding; the samples stay, also as to the
    /// baseline.
    void ScopeZero();

    // ---- Files

    /// Reads `name` with ".wvf" appended, which is appended also where the name ends in it already.
    /// `points` tells the samples that are read: all that the header announces if it is negative,
    /// none if it is 0 (m_HeaderPoints is set), otherwise that many, with zeros for those that the
    /// file doesn't have. Where memory for them is refused the trace is empty.
    ///
    /// False if the file can't be opened; then the trace is empty and the header stays. True
    /// otherwise, whatever the file holds: a file of a newer version leaves the trace empty and the
    /// header as it was, a header that is cut short leaves its missing fields as they were, and
    /// announces no points where the count itself is missing, and an empty string in the file
    /// leaves the field's text as it was.
    bool Read(DString name, int points);
    /// The same from a stream that stands at the start of a file.
    void Read(DFile& file, int points);
    /// Writes `name` with ".wvf" appended and sets m_Date. False if the file can't be opened for
    /// writing. False too, with a message, if the file exists and is locked, unless m_Flags is 4 or
    /// more. The file is written locked if m_Flags has the bit of value 2, else unlocked. Reading a
    /// locked file sets m_Flags to 1, which has no effect on writing.
    bool Write(DString name);
    /// The same to a stream, without looking at locks.
    void Write(DFile& file);

    // ---- Time base and scale

    /// Resamples to `n` points from time `start` on at intervals of `step`, by linear
    /// interpolation; times outside the trace give 0. A `step` of 0 or below keeps the interval and
    /// starts on the sample at or before `start`. On the grid that the trace already has nothing
    /// changes at all; otherwise the scope fields and the baseline are folded away as by ScopeZero.
    /// With an interval of 0 or below, whose result has no meaning, resampling stops at the trace's
    /// edge and leaves zeros. Extrema and scale unit are not updated.
    void Align(int n, float start, float step);
    /// Align to the samples of `other`, then m_TimeShift and m_InitialStart are taken from it.
    /// Scope terms in the start time of `other` are in the samples' places but not in the resulting
    /// start time.
    void AlignTo(Waveform const& other);
    /// The times of all samples from index `from` on, which counts as 0 if negative. Empty if there
    /// are none.
    void TimeFill(DArray<float>& times, int from) const;
    /// Finds extrema, their indexes and the scale unit. A sample that isn't valid (IsVF) is
    /// replaced by -DFMax for good. The first of equal extremes counts; samples at or below -9.9e33
    /// are no minimum. On a trace of zeros m_MaxIndex is 0; on an empty one m_Max is -DFMax and
    /// m_Min DFMax.
    void Scale();
    /// Changes calibration, attenuation and offset of the samples. 0 or an invalid value (IsVF)
    /// keeps the calibration or attenuation. `off` is in the units of the samples as they stand; an
    /// invalid value keeps the baseline, 0 moves it to 0. The extrema stay as they were.
    void SetCalAttOff(float cal, float att, float off);
    /// Index of the sample at or before a time, not limited to the trace.
    int Index(float time) const;
    /// The same, limited to 0 and the last sample. An empty trace gives 0 or -1.
    int PointAtTime(float time) const;

    // ---- Measurements

    /// The header field or measured quantity of a name: two letters in either case, and for some an
    /// argument a in brackets, as in "tv[1.5]". With x the samples from k = 0, N their number, T
    /// the interval, S the start time and E the time of the last sample:
    ///
    ///   t1 ... t9 ta tb tc   m_Params[0] ... m_Params[11]
    ///   st ft tp             S, E, T
    ///   it ts is pt td       m_ScopePT + m_InitialStart + m_ScopeTD; the terms of S one by one
    ///   mx mn tm tn          m_Max, m_Min; m_MaxIndex and m_MinIndex as times, one T late
    ///   su cl at bl sv       m_ScaleUnit, m_Calib, m_Atten, m_Baseline, m_ScopeSV
    ///   19 28                rise time from 10 to 90, from 20 to 80 percent of m_Max
    ///   fh                   full width at half of m_Max, from the peak at m_MaxIndex outwards; a
    ///                        side that doesn't fall below half reaches to that end of the trace
    ///   av la[a]             Avg(S, E), Avg(S, a)
    ///   in                   integral: sum of x[1] ... x[N-1], times T
    ///   pi                   the greatest running sum of the same, at least 0, times T
    ///   ri                   integral over a disc of radius S and the rings around it, x being a
    ///                        profile over the radius: the disc in the units of S, ring k with the
    ///                        radius k - 0.5 + S in points; S counts as 0 if negative
    ///   sd                   standard deviation, over N - 1
    ///   wa                   mean time weighted by x; 0 if the samples sum to 0
    ///   vt[a]                ValAtTime(a)
    ///   tv[a] t%[a]          TimeAtVal(a), TimeAtVal of a percent of m_Max
    ///   bv[a] b%[a]          TimeAtValR(a), TimeAtValR of a percent of m_Max
    ///   lt[a]                time of the last sample at or before a, not limited to the trace
    ///
    /// Behind the two letters only the text between the next character and the last one is looked
    /// at; what isn't a number there counts as 0. -DFMax for an unknown name and for an empty
    /// trace. Measurements work in single precision. All sums but that of ri may be rounded in
    /// another order than that of the samples; where that would overflow, they aren't.
    float GetTraceParam(DString const& name) const;
    /// The parameter of that name is measured on the samples; what the header alone answers isn't,
    /// nor is an unknown name.
    static bool NeedsSamples(DString const& name);
    /// GetTraceParam of the trace in the file, for one that was read without its samples: as many
    /// as m_HeaderPoints tells count as there. -DFMax also for a parameter that needs samples.
    float GetHeaderParam(DString const& name) const;
    /// GetTraceParam for a pair of traces of equal length, of which this one is the ordinate and
    /// `xAxis`, with the samples u, the abscissa:
    ///
    ///   st ft             first and last sample of `xAxis`
    ///   tm tn             u[m_MaxIndex], u[m_MinIndex]: one behind the extremes of this trace
    ///   19 28             as above, by XYTimeAtVal
    ///   vt[a]             value of this trace at the time at which `xAxis` reaches a
    ///   tv[a] bv[a]       XYTimeAtVal(a), XYTimeAtValR(a)
    ///   t%[a] b%[a]       XYTimeAtVal and XYTimeAtValR of the level a * 100 / m_Max: not the
    ///                     percentage of GetTraceParam
    ///   la[a] ta[a]       Avg up to and from the time at which `xAxis` reaches a
    ///
    /// All other names are those of this trace. -DFMax also if the lengths differ.
    float GetXYTraceParam(DString const& name, Waveform const& xAxis) const;

    /// Time at which the samples first cross a level, seen from the start, between the two samples
    /// around the crossing. A sample equal to the level is no crossing unless it is the first. If
    /// the level isn't between m_Min and m_Max: one interval behind the last sample. If there is no
    /// crossing, from the line through the last two samples.
    float TimeAtVal(float level) const;
    /// The same seen from the end. Off the trace: one interval before the first sample. The
    /// interval between the first two samples is used only if it is the only one; if there is no
    /// crossing, from the line through the second and third sample.
    float TimeAtValR(float level) const;
    /// Mean of the samples from one time up to, but without, another, both limited to the trace.
    /// The sample itself if both fall on one; 0 if `to` is before `from`, and on an empty trace.
    float Avg(float from, float to) const;
    /// Linear interpolation at a time. 0 before the trace, and from two intervals behind its last
    /// sample on; the last sample in between.
    float ValAtTime(float time) const;
    /// The crossings of TimeAtVal and TimeAtValR on this trace, answered by the samples of `xAxis`;
    /// the longer trace counts as cut to the shorter. Within the interval of the crossing the
    /// abscissa runs against the ordinate: a level equal to the sample before the crossing gives
    /// the abscissa behind it. Off the trace: the last sample of `xAxis` that has a partner
    /// (the last of all if this trace is empty), or the first for XYTimeAtValR, whose search also
    /// reaches the first interval; 0 if `xAxis` is empty.
    float XYTimeAtVal(float level, Waveform const& xAxis) const;
    float XYTimeAtValR(float level, Waveform const& xAxis) const;
};

extern template class DArray<Waveform>;
