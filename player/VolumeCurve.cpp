#include "VolumeCurve.h"

#include <cmath>

namespace {

// Hundredths of a decibel per decade of the fraction: 20 dB per decade of amplitude, and the amplitude is
// the fraction cubed.
constexpr double kCubicHundredthsPerDecade = 3 * 20 * 100;

// The fraction whose cube is the amplitude of `db` relative to `maxDb`. A minimum far below any real
// gain (ALSA's "muted" gain) gives 0.
double CubeRootOfAmplitude(long db, long maxDb) {
  return std::pow(10.0, static_cast<double>(db - maxDb) / kCubicHundredthsPerDecade);
}

}  // namespace

long PLAYER_CubicVolumeToDb(double fraction, long minDb, long maxDb) {
  if (!(fraction > 0.0)) return minDb;  // also NaN
  if (fraction >= 1.0) return maxDb;
  const double bottom = CubeRootOfAmplitude(minDb, maxDb);
  const double root = bottom + fraction * (1.0 - bottom);
  const long db = maxDb + std::lround(kCubicHundredthsPerDecade * std::log10(root));
  if (db < minDb) return minDb;
  return db > maxDb ? maxDb : db;
}

double PLAYER_CubicDbToVolume(long db, long minDb, long maxDb) {
  if (db <= minDb) return 0.0;
  if (db >= maxDb) return 1.0;
  const double bottom = CubeRootOfAmplitude(minDb, maxDb);
  const double fraction = (CubeRootOfAmplitude(db, maxDb) - bottom) / (1.0 - bottom);
  if (fraction < 0.0) return 0.0;
  return fraction > 1.0 ? 1.0 : fraction;
}

long PLAYER_LinearVolumeToRaw(double fraction, long minRaw, long maxRaw) {
  if (maxRaw <= minRaw || !(fraction > 0.0)) return minRaw;
  if (fraction >= 1.0) return maxRaw;
  return minRaw + std::lround(fraction * static_cast<double>(maxRaw - minRaw));
}

double PLAYER_LinearRawToVolume(long raw, long minRaw, long maxRaw) {
  if (maxRaw <= minRaw || raw >= maxRaw) return 1.0;
  if (raw <= minRaw) return 0.0;
  return static_cast<double>(raw - minRaw) / static_cast<double>(maxRaw - minRaw);
}

int PLAYER_VolumePercent(double fraction) {
  if (!(fraction > 0.0)) return 0;
  if (fraction >= 1.0) return 100;
  return static_cast<int>(std::lround(fraction * 100.0));
}
