/* Makes discharge.csv, the trace of the example: prints it on standard output.
 *
 * The noise comes from a generator of its own, so that every run on every machine prints the same
 * file. */
#include <math.h>
#include <stdint.h>
#include <stdio.h>

enum { Points = 2000 };

static const double Interval = 0.1e-6;     /* s */
static const double Amplitude = 60000.0;   /* A */
static const double DecayTime = 80e-6;     /* s */
static const double Frequency = 10000.0;   /* Hz */
static const double NoiseDeviation = 60.0; /* A */

static const char Header[] =
    "# Current of a capacitor discharge into a coil (A) over time (s), from make_discharge.c:\n"
    "#   I(t) = 60000 A * exp(-t / 80e-6 s) * sin(2 pi * 10000 Hz * t) + noise\n"
    "# at 2000 points, one every 0.1e-6 s from t = 0 on. The noise is normal, with a standard\n"
    "# deviation of 60 A. At 10 % and 90 % of the peak the current rises by more than that from\n"
    "# point to point, so the rise time is sharp within about one interval. The greatest point\n"
    "# lies some 100 A above the peak of the formula, 44.8 kA.\n"
    "# time (s),current (A)\n";

/* The next number from 0 up to, and without, 1: a 64-bit linear congruential generator. */
static double Uniform(void) {
    static uint64_t state = 1;
    state = state * 6364136223846793005u + 1442695040888963407u;
    return (double)(state >> 11) / 9007199254740992.0;
}

/* A sum of twelve uniform numbers has a variance of 1 and is close to normal. */
static double Normal(void) {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i)
        sum += Uniform();
    return sum;
}

static double Current(double time) {
    const double twoPi = 6.283185307179586;
    return Amplitude * exp(-time / DecayTime) * sin(twoPi * Frequency * time);
}

int main(void) {
    fputs(Header, stdout);
    for (int i = 0; i < Points; ++i) {
        const double time = i * Interval;
        printf("%.4e,%.1f\n", time, Current(time) + NoiseDeviation * Normal());
    }
    return ferror(stdout) != 0;
}
