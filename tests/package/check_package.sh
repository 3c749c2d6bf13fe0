#!/usr/bin/env bash
# The Debian packages, built, checked and run:
#   1. `cpack -G DEB` in the build tree makes open-renderer and open-renderer-dev;
#   2. their files, fields, dependencies, shlibs, triggers and conffiles (dpkg-deb);
#   3. the maintainer scripts, run against recording stand-ins of adduser, deb-systemd-helper and systemctl;
#   4. lintian, failing on errors and warnings (the ones that hold by design are overridden in
#      packaging/debian/*.lintian-overrides, each with its reason);
#   5. the systemd unit (systemd-analyze verify, and its exposure score);
#   6. both unpacked into a scratch root: the libraries' SONAMEs, RUNPATHs and exported symbols, the daemon's
#      --version and default document root, a short real start on loopback answering its description and
#      an SCPD over HTTP, and a clean stop on SIGTERM;
#   7. the example host (examples/minimal_host) built with CMake against the unpacked tree through
#      pkg-config, and run.
# Nothing is sent anywhere but loopback.
#   usage: check_package.sh <build dir> <source dir>
set -euo pipefail
build=$(cd "$1" && pwd)
source=$(cd "$2" && pwd)
work=$build/tests/package/work
rm -rf "$work"
mkdir -p "$work"
daemon_pid=
cleanup() {
  if [[ -n $daemon_pid ]]; then kill -KILL "$daemon_pid" 2>/dev/null || true; fi
}
trap cleanup EXIT

failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}
step() {
  echo "== $* ($(date +%s.%N | cut -c1-14))"
}

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build/CMakeCache.txt")
[[ -n $version && -n $libdir ]] || { echo "no project version or libdir in $build/CMakeCache.txt"; exit 1; }
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
[[ $prefix == /usr ]] || { echo "the package is built from a tree with prefix /usr, not $prefix"; exit 1; }
arch=$(dpkg --print-architecture)
runtime_deb=$work/open-renderer_${version}_${arch}.deb
dev_deb=$work/open-renderer-dev_${version}_${arch}.deb

step "1. cpack -G DEB"
(cd "$build" && cpack -G DEB -B "$work" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
for deb in "$runtime_deb" "$dev_deb"; do
  [[ -f $deb ]] || { echo "cpack made no $deb:"; cat "$work/cpack.log"; exit 1; }
  echo "$(basename "$deb"): $(stat -c %s "$deb") bytes"
done

step "2. contents and control fields"
contents() { dpkg-deb --contents "$1" | awk '{print $6 ($7 == "->" ? " -> " $8 : "")}' | sed 's|^\./|/|'; }
contents "$runtime_deb" >"$work/runtime.contents"
contents "$dev_deb" >"$work/dev.contents"
for file in /usr/bin/open-renderer \
    "/usr/$libdir/libsink_upnp.so.$version" "/usr/$libdir/libsink_upnp.so.1 -> libsink_upnp.so.$version" \
    "/usr/$libdir/libdmr_platform.so.$version" \
    "/usr/$libdir/libdmr_platform.so.1 -> libdmr_platform.so.$version" \
    /etc/open-renderer.conf /lib/systemd/system/open-renderer.service /usr/share/man/man1/open-renderer.1.gz \
    /usr/share/open-renderer/docroot/openhome.xml /usr/share/open-renderer/docroot/icons/icon-48.png \
    /usr/share/open-renderer/docroot/icons/icon-120.png /usr/share/open-renderer/docroot/scpd/AVTransport.xml \
    /usr/share/open-renderer/docroot/scpd/Playlist.xml /usr/share/open-renderer/docroot/scpd/Volume.xml \
    /usr/share/open-renderer/docroot/status/index.html \
    /usr/share/doc/open-renderer/copyright /usr/share/doc/open-renderer/changelog.gz \
    /usr/share/lintian/overrides/open-renderer; do
  grep -qxF "$file" "$work/runtime.contents" || fail "open-renderer lacks $file"
done
for file in /usr/include/open-renderer/sink_upnp/SinkCTSSUPnPService.h \
    /usr/include/open-renderer/sink_upnp/OpenHomeUPnPService.h \
    /usr/include/open-renderer/playlist/PlaylistManager.h \
    /usr/include/open-renderer/marlo/SinkContentTransferSubsystem.h /usr/include/open-renderer/dmr_cmn/String.h \
    /usr/include/open-renderer/sink_core/TransferService.h /usr/include/open-renderer/corva/MediaMetaData.h \
    "/usr/$libdir/pkgconfig/open-renderer-plugin.pc" "/usr/$libdir/libsink_upnp.so -> libsink_upnp.so.1" \
    "/usr/$libdir/libdmr_platform.so -> libdmr_platform.so.1" /usr/share/doc/open-renderer-dev/copyright; do
  grep -qxF "$file" "$work/dev.contents" || fail "open-renderer-dev lacks $file"
done
# Nothing of the build, the tests or the runtime's private parts; no development files in the runtime.
if grep -E '^/usr/local|\.a$|/tests?/|FaultInjection|/Xml\.h|ServiceFrame\.h' "$work/runtime.contents" \
    "$work/dev.contents"; then
  fail "files that belong in no package (above)"
fi
if grep -E '\.h$|\.pc$|\.so( |$)' "$work/runtime.contents"; then
  fail "development files in open-renderer (above)"
fi

field() { dpkg-deb --field "$1" "$2"; }
[[ $(field "$runtime_deb" Package) == open-renderer ]] || fail "Package of the runtime package"
[[ $(field "$runtime_deb" Version) == "$version" ]] || fail "Version $(field "$runtime_deb" Version), not $version"
[[ $(field "$runtime_deb" Maintainer) == *@* ]] || fail "no Maintainer address"
[[ $(field "$runtime_deb" Description) == "UPnP AV and OpenHome media renderer daemon"* ]] || fail "Description"
depends=$(field "$runtime_deb" Depends)
echo "Depends: $depends"
for package in libgupnp-1.6-0 libgssdp-1.6-0 libsoup-3.0-0 libglib2.0-0 libxml2 libgstreamer1.0-0 \
    libgstreamer-plugins-base1.0-0 gstreamer1.0-plugins-base gstreamer1.0-plugins-good libasound2 adduser; do
  grep -qE "(^|, )$package( |,|$)" <<<"$depends" || fail "Depends lacks $package"
done
[[ $(field "$dev_deb" Depends) == *"open-renderer (= $version)"* ]] || fail "open-renderer-dev Depends"

dpkg-deb --control "$runtime_deb" "$work/control"
conffiles=$(cat "$work/control/conffiles")
[[ $conffiles == /etc/open-renderer.conf ]] || fail "conffiles: $conffiles"
grep -qx 'activate-noawait ldconfig' "$work/control/triggers" || fail "no ldconfig trigger"
grep -q "^libsink_upnp 1 open-renderer (>= $version)" "$work/control/shlibs" || fail "shlibs: libsink_upnp"
grep -q "^libdmr_platform 1 open-renderer (>= $version)" "$work/control/shlibs" || fail "shlibs: libdmr_platform"
for script in postinst prerm postrm; do
  [[ -x $work/control/$script ]] || fail "$script missing or not executable"
  sh -n "$work/control/$script" || fail "$script: syntax"
done

step "3. maintainer scripts against recording stand-ins"
# Each stand-in appends its command line to calls.log. getent finds no user on the first install and the
# user on an upgrade; deb-systemd-helper's was-enabled answers true, as on a first install.
stand_ins=$work/stand-ins
mkdir -p "$stand_ins"
for command in adduser deb-systemd-helper deb-systemd-invoke systemctl; do
  printf '#!/bin/sh\necho "%s $*" >>"%s"\nexit 0\n' "$command" "$work/calls.log" >"$stand_ins/$command"
  chmod +x "$stand_ins/$command"
done
printf '#!/bin/sh\necho "getent $*" >>"%s"\n[ -n "$USER_EXISTS" ]\n' "$work/calls.log" >"$stand_ins/getent"
chmod +x "$stand_ins/getent"
run_script() {  # <script> <arguments...>: runs it with the stand-ins first on PATH; its calls in $calls
  : >"$work/calls.log"
  PATH="$stand_ins:$PATH" "$work/control/$1" "${@:2}" || fail "$1 ${*:2} exited with $?"
  calls=$(cat "$work/calls.log")
}
run_script postinst configure
grep -q '^adduser --system --group .*open-renderer$' <<<"$calls" || fail "postinst configure made no system user"
grep -qx 'deb-systemd-helper enable open-renderer.service' <<<"$calls" || fail "postinst did not enable the unit"
if [[ -d /run/systemd/system ]]; then
  grep -qx 'deb-systemd-invoke start open-renderer.service' <<<"$calls" || fail "postinst did not start it"
elif grep -E '^(systemctl|deb-systemd-invoke)' <<<"$calls"; then
  # No systemd running (a chroot, a container): enabled, never started, systemctl never called.
  fail "postinst called systemd without systemd"
fi
USER_EXISTS=1 run_script postinst configure "$version"
if grep -q '^adduser' <<<"$calls"; then fail "postinst made the user again on an upgrade"; fi
run_script prerm remove
[[ -d /run/systemd/system || -z $calls ]] || fail "prerm called systemd without systemd: $calls"
run_script postrm remove
grep -qx 'deb-systemd-helper mask open-renderer.service' <<<"$calls" || fail "postrm remove did not mask the unit"
# A purge is read, not run: it removes the state directory of this machine's own installed service.
grep -qF 'deb-systemd-helper purge open-renderer.service' "$work/control/postrm" || fail "postrm purge: the unit"
grep -qxF '  rm -rf /var/lib/open-renderer /var/lib/private/open-renderer' "$work/control/postrm" ||
  fail "postrm purge: the state directory"

step "4. lintian"
if ! command -v lintian >/dev/null; then
  fail "lintian is not installed (scripts/install-deps.sh installs it)"
elif ! lintian --fail-on error,warning "$runtime_deb" "$dev_deb" >"$work/lintian.log" 2>&1; then
  fail "lintian:"
  cat "$work/lintian.log"
else
  echo "lintian: no errors, no warnings beyond the documented overrides"
fi

step "5. unpacked into a scratch root"
root=$work/root
dpkg-deb -x "$runtime_deb" "$root"
dpkg-deb -x "$dev_deb" "$root"
runpath() { readelf -d "$1" | sed -n 's/.*(\(RPATH\|RUNPATH\)).*\[\(.*\)\]/\2/p'; }
soname() { readelf -d "$1" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p'; }
[[ $(runpath "$root/usr/bin/open-renderer") == "\$ORIGIN/../$libdir" ]] ||
  fail "the daemon's RUNPATH is '$(runpath "$root/usr/bin/open-renderer")'"
[[ $(runpath "$root/usr/$libdir/libsink_upnp.so.$version") == "\$ORIGIN" ]] || fail "libsink_upnp's RUNPATH"
[[ -z $(runpath "$root/usr/$libdir/libdmr_platform.so.$version") ]] || fail "libdmr_platform has a RUNPATH"
[[ $(soname "$root/usr/$libdir/libsink_upnp.so.$version") == libsink_upnp.so.1 ]] || fail "libsink_upnp's SONAME"
[[ $(soname "$root/usr/$libdir/libdmr_platform.so.$version") == libdmr_platform.so.1 ]] ||
  fail "libdmr_platform's SONAME"
"$source/tests/abi/check_exported_symbols.sh" "$root/usr/$libdir/libsink_upnp.so.$version" >/dev/null ||
  fail "the packaged libsink_upnp exports more than its interface"
python3 "$source/tests/abi/check_private_members_hidden.py" "$root/usr/$libdir/libsink_upnp.so.$version" \
  "$root"/usr/include/open-renderer/{sink_upnp,playlist}/*.h >/dev/null ||
  fail "the packaged libsink_upnp exports private member functions"

installed_version=$("$root/usr/bin/open-renderer" --version)
[[ $installed_version == "open-renderer $version" ]] || fail "--version says '$installed_version'"
# The daemon built for /usr looks for its document root where the package puts it.
default_docroot=$("$root/usr/bin/open-renderer" --help | sed -n '/--docroot/,/here:/s/^ *here: //p')
[[ $default_docroot == /usr/share/open-renderer/docroot ]] || fail "default docroot '$default_docroot'"
[[ -f $root$default_docroot/openhome.xml ]] || fail "the package has no $default_docroot/openhome.xml"
for section in NAME SYNOPSIS DESCRIPTION OPTIONS "AUDIO OUTPUT AND MIXER" "PROTOCOL LIST" "DOCUMENT ROOT" \
    "STATE DIRECTORY" FILES SIGNALS "EXIT STATUS"; do
  zcat "$root/usr/share/man/man1/open-renderer.1.gz" | grep -qx "\.SH $section" || fail "man page lacks $section"
done

step "6. systemd unit"
if command -v systemd-analyze >/dev/null; then
  # The unit as packaged, its ExecStart pointed at the unpacked daemon (the one change), so that the
  # check finds the executable. Any message at all fails: verify exits 0 on an unknown key.
  mkdir -p "$work/unit"
  sed "s|^ExecStart=/usr/bin/|ExecStart=$root/usr/bin/|" "$root/lib/systemd/system/open-renderer.service" \
    >"$work/unit/open-renderer.service"
  if ! systemd-analyze verify --man=no "$work/unit/open-renderer.service" >"$work/verify.log" 2>&1 ||
      [[ -s $work/verify.log ]]; then
    fail "systemd-analyze verify:"
    cat "$work/verify.log"
  fi
  # The hardening, measured: systemd's exposure score, 0 (locked down) to 10 (unprotected).
  if ! systemd-analyze security --offline=yes --threshold=25 "$work/unit/open-renderer.service" \
      >"$work/security.log" 2>&1; then
    fail "exposure above 2.5:"
    tail -1 "$work/security.log"
  fi
  grep -o 'Overall exposure level.*' "$work/security.log" || true
  unit=$root/lib/systemd/system/open-renderer.service
  for line in User=open-renderer SupplementaryGroups=audio StateDirectory=open-renderer \
      Wants=network-online.target After=network-online.target Restart=on-failure NoNewPrivileges=yes \
      ProtectSystem=strict ProtectHome=yes PrivateTmp=yes; do
    grep -q "^${line%%=*}=${line#*=}\( \|$\)" "$unit" || fail "the unit lacks $line"
  done
else
  fail "systemd-analyze is not installed (scripts/install-deps.sh installs systemd)"
fi

step "7. a short real start of the unpacked daemon on loopback"
# The document root is named because the daemon's default is the installed /usr/share one, which this
# scratch root only mirrors.
state=$work/state
log=$work/daemon.log
"$root/usr/bin/open-renderer" --interface lo --port 0 --output null --state-dir "$state" \
  --name "Package Test Renderer" --docroot "$root$default_docroot" >"$log" 2>&1 &
daemon_pid=$!
location=
for _ in $(seq 1 150); do
  location=$(grep -o 'ready: http://127\.0\.0\.1:[0-9]*/[^ ]*\.xml' "$log" | head -1 | cut -d' ' -f2) || true
  [[ -n $location ]] && break
  kill -0 "$daemon_pid" 2>/dev/null || break
  sleep 0.1
done
if [[ -z $location ]]; then
  fail "the unpacked daemon never said it was ready:"
  cat "$log"
else
  echo "description: $location"
  if ! python3 - "$location" "Package Test Renderer" <<'EOF'; then
import sys
import urllib.parse
import urllib.request
import xml.etree.ElementTree as ET

location, name = sys.argv[1], sys.argv[2]
ns = {"d": "urn:schemas-upnp-org:device-1-0"}
description = ET.fromstring(urllib.request.urlopen(location, timeout=5).read())
found = description.findtext("d:device/d:friendlyName", namespaces=ns)
if found != name:
    sys.exit("friendlyName %r, not %r" % (found, name))
scpds = [e.text for e in description.iter("{urn:schemas-upnp-org:device-1-0}SCPDURL")]
if len(scpds) < 2:
    sys.exit("only %d SCPDURL in the description" % len(scpds))
for scpd in scpds:
    document = ET.fromstring(urllib.request.urlopen(urllib.parse.urljoin(location, scpd), timeout=5).read())
    if document.find("{urn:schemas-upnp-org:service-1-0}serviceStateTable") is None:
        sys.exit("%s has no serviceStateTable" % scpd)
print("friendlyName and %d SCPDs served" % len(scpds))
EOF
    fail "the description or an SCPD over HTTP"
  fi
  kill -TERM "$daemon_pid"
  status=0
  wait "$daemon_pid" || status=$?
  daemon_pid=
  [[ $status -eq 0 ]] || { fail "exit status $status after SIGTERM:"; cat "$log"; }
fi

step "8. the example host, built against the unpacked tree through pkg-config"
export PKG_CONFIG_PATH=$root/usr/$libdir/pkgconfig
if ! cmake -S "$source/examples/minimal_host" -B "$work/example" -G Ninja \
    "-DPKG_CONFIG_ARGN=--define-variable=prefix=$root/usr" >"$work/example.log" 2>&1 ||
    ! cmake --build "$work/example" >>"$work/example.log" 2>&1; then
  fail "the example host did not build:"
  cat "$work/example.log"
elif ! LD_LIBRARY_PATH=$root/usr/$libdir "$work/example/minimal_host" >"$work/example.out" 2>&1 ||
    ! grep -qx 'minimal_host: ok' "$work/example.out"; then
  fail "the example host:"
  cat "$work/example.out"
else
  echo "minimal_host: ok"
fi

step "done"
if ((failures > 0)); then
  echo "$failures check(s) failed; the packages are in $work"
  exit 1
fi
echo "the packages build, pass their checks, install and run"
