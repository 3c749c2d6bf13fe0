// How the 0..100 volume of RenderingControl maps onto a hardware mixer element, as pure functions.
//
// A volume is a fraction in [0, 1] (the percent over 100). An element that tells its gain in decibels gets
// the cubic mapping: the fraction is the cube root of the amplitude, so that equal steps of the volume
// sound like equal steps of loudness. That is also what the software volume does (GStreamer's "cubic"
// stream volume), so a listener hears the same scale on both. The element's lowest gain is the bottom of
// the scale: the fraction moves linearly between the cube root of that gain's amplitude and 1, so that
// volume 0 is the element's minimum and every step of the scale lands inside the element's range. An
// element without decibels gets its raw range, linearly.
//
// Decibels are in hundredths of a decibel, as ALSA gives them; the maximum of a range may be below 0 dB.
#ifndef PLAYER_VOLUME_CURVE_H_
#define PLAYER_VOLUME_CURVE_H_

// The gain for `fraction` on an element whose gains span [minDb, maxDb] (minDb < maxDb), rounded to the
// hundredth: minDb for 0 (and below), maxDb for 1 (and above).
long PLAYER_CubicVolumeToDb(double fraction, long minDb, long maxDb);

// The inverse: the fraction whose gain is `db`; 0 at or below minDb, 1 at or above maxDb.
double PLAYER_CubicDbToVolume(long db, long minDb, long maxDb);

// The raw value for `fraction` on an element whose raw values span [minRaw, maxRaw], rounded to the
// nearest: minRaw for 0 (and below), maxRaw for 1 (and above). An empty range answers minRaw.
long PLAYER_LinearVolumeToRaw(double fraction, long minRaw, long maxRaw);

// The inverse: the fraction of the range `raw` stands at, within [0, 1]. An empty range answers 1: the
// element plays at the only level it has.
double PLAYER_LinearRawToVolume(long raw, long minRaw, long maxRaw);

// The fraction as a whole percent, rounded to the nearest, within [0, 100].
int PLAYER_VolumePercent(double fraction);

#endif  // PLAYER_VOLUME_CURVE_H_
