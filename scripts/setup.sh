#!/usr/bin/env bash
# Installs the Debian packages the project needs.
#   scripts/setup.sh          what building and running the program needs
#   scripts/setup.sh --test   that, and what the tests, benchmarks, fuzz
#                             targets and the end-to-end runs need besides
# Safe to run again: it asks apt only for what is missing, and refreshes the
# package lists only when something is.
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config
  # libraries
  libicu-dev libplist-dev libzip-dev libcurl4-openssl-dev libudev-dev
  libcli11-dev libfmt-dev nlohmann-json3-dev
  # the ids databases bundled with the program, sysctl, which it asks for
  # the machine model, and acpiexec, which reads each port's connector type
  # from the firmware's ACPI tables
  hwdata procps acpica-tools
  # the desktop window: Qt 6 Widgets (D-Bus and SVG icons), the sound theme
  # player and fonts for the window
  qt6-base-dev libqt6svg6 libcanberra-dev sound-theme-freedesktop fonts-dejavu-core
)

if [ "${1:-}" = "--test" ]; then
  packages+=(
    # the fuzz build (clang with libFuzzer and the sanitizer runtimes) and
    # the formatting check
    clang libclang-rt-14-dev clang-format
    # tests and benchmarks
    libgtest-dev libgmock-dev googletest libbenchmark-dev libcpp-httplib-dev zip unzip python3
    # the end-to-end test in a real Linux kernel under QEMU (the packages of
    # the qemu-usb harness's own setup.sh)
    # (acpica-tools, which it needs too, is in the list above)
    qemu-system-x86 qemu-utils linux-image-amd64 busybox-static cpio kmod udev socat
    # a virtual display for the window's screenshots
    xvfb xauth
    # the Debian package: CPack's dependency list (dpkg-shlibdeps, file) and
    # the checks scripts/package.sh and the test command run on it
    dpkg-dev file lintian desktop-file-utils appstream
  )
elif [ $# -gt 0 ]; then
  echo "usage: $0 [--test]" >&2
  exit 2
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if ((${#missing[@]} == 0)); then
  exit 0
fi

echo "setup: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -q
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
