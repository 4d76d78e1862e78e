#!/usr/bin/env bash
# Checks what a user installs, without a desktop: an install into a temporary prefix runs, the desktop
# entry and the AppStream file validate, the manual pages and the bash completion know every option that
# --help lists, and the .deb passes lintian without errors.
#   packaging/check.sh BUILD_DIR      (BUILD_DIR built already)
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:?usage: packaging/check.sh BUILD_DIR}
app_id=org.vindaro.Vindaro
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build_dir/CMakeCache.txt")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

fail() {
  echo "packaging check failed: $*" >&2
  exit 1
}

echo "== install into a temporary prefix"
cmake --install "$build_dir" --prefix "$prefix" --strip >/dev/null
for tool in vindaro-copy vindaro-info; do
  got=$("$prefix/bin/$tool" --version)
  [ "$got" = "$tool $version" ] || fail "$tool --version printed '$got', not '$tool $version'"
  echo "$got"
done
[ -x "$prefix/bin/vindaro" ] || fail "bin/vindaro is missing"
for side in 16 24 32 48 64 128 256; do
  [ -s "$prefix/share/icons/hicolor/${side}x${side}/apps/vindaro.png" ] || fail "no ${side}px icon"
done
[ -s "$prefix/share/icons/hicolor/scalable/apps/vindaro.svg" ] || fail "no scalable icon"

echo "== desktop entry and AppStream file"
desktop-file-validate "$prefix/share/applications/$app_id.desktop"
appstreamcli validate --no-net "$prefix/share/metainfo/$app_id.metainfo.xml"

echo "== manual pages and bash completion know every option of --help"
for tool in vindaro-copy vindaro-info; do
  options=$("$prefix/bin/$tool" --help | grep -o -- '--[a-z][a-z-]*' | sort -u)
  for page in "$prefix/share/man/man1/$tool.1.gz" "$prefix/share/man/zh_CN/man1/$tool.1.gz"; do
    text=$(zcat "$page" | sed 's/\\-/-/g')
    for option in $options; do
      grep -q -- "$option" <<<"$text" || fail "$page does not mention $option"
    done
    # Every page renders without a warning from groff.
    warnings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$page: $warnings"
  done
done
completion=$prefix/share/bash-completion/completions/vindaro-copy
for option in $("$prefix/bin/vindaro-copy" --help | grep -o -- '--[a-z][a-z-]*' | sort -u); do
  grep -q -- "$option" "$completion" || fail "the bash completion does not offer $option"
done
# What bash offers after "vindaro-copy --exi<TAB>" and "vindaro-copy --existing me<TAB>".
completed=$(bash -c '
  source /usr/share/bash-completion/bash_completion
  source "$1"
  complete_line() {
    COMP_LINE=$1; COMP_POINT=${#COMP_LINE}; read -r -a COMP_WORDS <<<"$COMP_LINE"; COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMPREPLY=()
    _vindaro_copy vindaro-copy "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    echo "${COMPREPLY[*]}"
  }
  complete_line "vindaro-copy --exi"
  complete_line "vindaro-copy --existing me"' _ "$completion")
[ "$completed" = $'--existing\nmerge' ] || fail "bash completion answered: $completed"

echo "== the .deb"
(cd "$build_dir" && cpack -G DEB -B "$work/deb" >/dev/null)
deb=$(ls "$work"/deb/vindaro_*.deb)
dpkg-deb --field "$deb" Package Version Depends Recommends
lintian --fail-on error --tag-display-limit 0 "$deb"
# Would apt install it on a bare system? The simulation starts from an empty list of installed packages.
if compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null; then
  : >"$work/no-packages"
  apt-get install --simulate -o Dir::State::status="$work/no-packages" "$deb" >"$work/simulation" 2>&1 ||
    fail "the .deb's dependencies do not resolve on a bare system: $(tail -5 "$work/simulation")"
  grep -q '^Inst vindaro ' "$work/simulation" || fail "apt would not install the .deb: $(tail -5 "$work/simulation")"
  echo "apt resolves its dependencies on a bare system ($(grep -c '^Inst ' "$work/simulation") packages)"
else
  echo "no apt package lists here: the dependency resolution is not checked"
fi
echo "packaging checks passed"
