// Colour profiles for tests.
#pragma once

#include <cstdint>
#include <vector>

#include <lcms2.h>

namespace quorvel::test {

/// The profile as it stands in a file; it is closed.
[[nodiscard]] inline std::vector<std::uint8_t> saved(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  std::vector<std::uint8_t> bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

[[nodiscard]] inline std::vector<std::uint8_t> rgbProfile(double gamma, const cmsCIExyYTRIPLE& primaries) {
  const cmsCIExyY white{0.3127, 0.3290, 1};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
  cmsToneCurve* curves[3] = {curve, curve, curve};
  const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsFreeToneCurve(curve);
  return saved(profile);
}

}  // namespace quorvel::test
