#!/usr/bin/env bash
# Sets up a Debian 12 machine for Vindaro, builds it, and then runs the program or the tests.
#   tools/setup.sh run     install what is missing, build, start the program
#   tools/setup.sh test    install what is missing, build, run the whole test suite, check what a user
#                          installs (packaging/check.sh: desktop entry, AppStream, manual pages, the .deb
#                          under lintian), then build it again with AddressSanitizer and
#                          UndefinedBehaviorSanitizer and run the suite once more
# BUILD_DIR (default: build) and BUILD_TYPE (default: RelWithDebInfo) may be set; CI=true turns
# warnings into errors and also checks that every source file is formatted.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=${1:-run}
build_dir=${BUILD_DIR:-build}
build_type=${BUILD_TYPE:-RelWithDebInfo}

packages=(cmake ninja-build g++ pkg-config clang-format git libfuse3-dev fuse3
  dbus-daemon qt6-base-dev qt6-base-dev-tools qt6-multimedia-dev libqt6multimediawidgets6 qt6-tools-dev qt6-l10n-tools
  libgl1-mesa-dev libgtest-dev xvfb xauth fonts-wqy-microhei zip gstreamer1.0-tools
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
  qt6-svg-dev qt6-translations-l10n desktop-file-utils appstream lintian dpkg-dev man-db bash-completion
  libcdio-dev libiso9660-dev libcdio-utils vcdimager ffmpeg gddrescue)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi

werror=OFF
[ "${CI:-}" = "true" ] && werror=ON
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE="$build_type" -DVINDARO_WERROR="$werror"
cmake --build "$build_dir" -j2

case "$mode" in
run)
  exec "$build_dir/src/app/vindaro"
  ;;
test)
  export LANG=C.UTF-8 LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
  if [ "${CI:-}" = "true" ] && [ -d .git ]; then
    echo "Checking the formatting of every source file"
    git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
  fi
  ctest --test-dir "$build_dir" --output-on-failure -j2 --timeout 600
  bash packaging/check.sh "$build_dir"
  # The same suite under the sanitizers: out-of-bounds reads and undefined behaviour fail it. Leak checks
  # are off because Qt's platform plugins keep allocations until exit.
  cmake -S . -B "$build_dir-asan" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVINDARO_WERROR="$werror" \
    -DCMAKE_CXX_FLAGS="-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined"
  cmake --build "$build_dir-asan" -j2
  ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir "$build_dir-asan" --output-on-failure -j2 --timeout 900
  ;;
*)
  echo "usage: tools/setup.sh run|test" >&2
  exit 2
  ;;
esac
