#!/usr/bin/env bash
# Takes the README's screenshots under a virtual X server, in a Chinese locale, with a temporary home and
# demo files under /tmp/vindaro-demo (so the paths in the pictures read well):
#   docs/screenshots/take.sh BUILD_DIR      (writes docs/screenshots/*.png)
set -euo pipefail
cd "$(dirname "$0")/../.."
build_dir=${1:?usage: docs/screenshots/take.sh BUILD_DIR}
demo=/tmp/vindaro-demo
if [ -e "$demo" ]; then
  echo "$demo exists already; move it away first" >&2
  exit 1
fi
cmake --build "$build_dir" --target vindaro_screenshots
home=$(mktemp -d)
trap 'rm -rf "$home" "$demo"' EXIT
HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share XDG_CACHE_HOME=$home/.cache \
  LANG=zh_CN.UTF-8 LC_ALL= \
  xvfb-run -a -s '-screen 0 1024x768x24' \
  "$build_dir/packaging/vindaro_screenshots" "$demo" docs/screenshots
