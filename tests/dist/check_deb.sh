#!/usr/bin/env bash
# Builds the .deb of this build tree with CPack, unpacks it into a temporary root, and checks
# what a system would get: the files in their places, units that name the installed collector,
# man pages that format cleanly, a collector that needs no widgets, and a control file whose
# dependencies are packages this system's package manager knows.
set -u
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

if ! cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/out" >"$work/cpack.log" 2>&1; then
  cat "$work/cpack.log"
  exit 1
fi
deb=$(ls "$work"/out/stellwyn_*.deb 2>/dev/null | head -1)
[ -n "$deb" ] || { cat "$work/cpack.log"; fail "no stellwyn_*.deb made"; exit 1; }
echo "package: $(basename "$deb")"
root=$work/root
# The package installs where the tree does: /usr from scripts/package, /usr/local by default.
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
p=${prefix#/}
dpkg-deb -x "$deb" "$root"
dpkg-deb -e "$deb" "$work/control"

for f in bin/stellwyn bin/stellwyn-collector bin/stellwyn-exec bin/stellwyn-sim \
         share/applications/stellwyn.desktop share/icons/hicolor/scalable/apps/stellwyn.svg \
         share/man/man1/stellwyn.1 share/man/man1/stellwyn-collector.1 \
         share/man/man1/stellwyn-sim.1 share/man/man1/stellwyn-exec.1 \
         lib/systemd/system/stellwyn-collector.service lib/systemd/user/stellwyn-collector.service \
         share/doc/stellwyn/70-stellwyn-ftdi.rules.example; do
  [ -f "$root/$p/$f" ] || fail "missing $prefix/$f"
done
for f in "$root/$p"/bin/*; do
  [ -x "$f" ] || fail "${f#"$root"} is not executable"
done
# Only the programs: no test or benchmark binary, nothing from the build tree.
extra=$(cd "$root" && find . -type f | grep -v -E "^\./$p/(bin/stellwyn(-collector|-exec|-sim)?|share/(applications|icons|man|doc)/.*|lib/systemd/(system|user)/stellwyn-collector\.service)\$")
[ -z "$extra" ] || fail "unexpected files: $extra"
if grep -rq "$build" "$root/$p/lib/systemd" "$root/$p/share/applications"; then
  fail "a unit or the menu entry names the build tree"
fi

for kind in system user; do
  grep -qx "ExecStart=$prefix/bin/stellwyn-collector.*" "$root/$p/lib/systemd/$kind/stellwyn-collector.service" ||
    fail "$kind unit does not start $prefix/bin/stellwyn-collector"
done
grep -qx 'Exec=stellwyn' "$root/$p/share/applications/stellwyn.desktop" || fail "menu entry's Exec"
grep -qx 'Icon=stellwyn' "$root/$p/share/applications/stellwyn.desktop" || fail "menu entry's Icon"

needed=$(objdump -p "$root/$p/bin/stellwyn-collector" | awk '/NEEDED/ {print $2}')
grep -q 'libQt6Core' <<<"$needed" || fail "collector: no Qt core in $needed"
grep -q 'libQt6Widgets\|libQt6Gui' <<<"$needed" && fail "collector links widgets: $needed"

(cd "$root/$p/share/man" && for page in man1/*.1; do
  said=$(groff -man -ww -z -Tutf8 "$page" 2>&1)
  [ -z "$said" ] || { echo "FAIL: $page: $said"; exit 1; }
done) || failures=$((failures + 1))

for script in postinst prerm postrm; do
  [ -x "$work/control/$script" ] || fail "no executable $script"
done

control=$work/control/control
depends=$(sed -n 's/^Depends: //p' "$control")
echo "Depends: $depends"
[ -n "$depends" ] || fail "no Depends"
for want in libqt6core6 libqt6widgets6 qt6-qpa-plugins libqt6sql6-sqlite; do
  grep -q "\b$want\b" <<<"$depends" || fail "Depends lacks $want"
done
# Every name, alternatives included, is a package the package manager has heard of.
for name in $(tr ',|' '\n\n' <<<"$depends" | sed 's/(.*)//; s/:any//; s/ //g' | sort -u); do
  if ! dpkg-query -W "$name" >/dev/null 2>&1 && [ -z "$(apt-cache show "$name" 2>/dev/null)" ]; then
    fail "Depends names $name, which no package is"
  fi
done
grep -q '^Architecture: amd64\|^Architecture: arm64\|^Architecture: ' "$control" || fail "no Architecture"

[ $failures -eq 0 ] && echo "the package holds what it should"
exit $((failures > 0))
