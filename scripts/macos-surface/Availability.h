// The release numbers availability checks compare against, encoded as the
// documentation gives them (10.15 is 101500, 11.0 is 110000). The oldest
// release a build supports comes from clang's own predefined
// __ENVIRONMENT_MAC_OS_X_VERSION_MIN_REQUIRED__ (set by the target triple).
#pragma once

#define __MAC_10_14 101400
#define __MAC_10_15 101500
#define __MAC_10_16 101600
#define __MAC_11_0 110000
#define __MAC_12_0 120000
#define __MAC_13_0 130000
#define __MAC_14_0 140000

#ifndef __MAC_OS_X_VERSION_MIN_REQUIRED
#define __MAC_OS_X_VERSION_MIN_REQUIRED __ENVIRONMENT_MAC_OS_X_VERSION_MIN_REQUIRED__
#endif
#define __MAC_OS_X_VERSION_MAX_ALLOWED __MAC_14_0

// A declaration that exists from a given macOS release on: using it in a
// build for an older release is what -Wunguarded-availability reports.
#define KORVANE_SURFACE_MACOS(release) __attribute__((availability(macos, introduced = release)))
