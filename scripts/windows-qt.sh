#!/usr/bin/env bash
# Prepares the Qt that the Windows cross build links: Qt 6.4.2 (qtbase) as static libraries for 64-bit
# MinGW-w64, with SQLite inside, and prints the folder to pass to CMake as FLEETWRIGHT_WINDOWS_QT.
#
#   scripts/windows-qt.sh [--from-source | --no-source-build]
#
#   FLEETWRIGHT_CACHE_DIR   where the Qt is kept (default: $XDG_CACHE_HOME/fleetwright, else ~/.cache/fleetwright)
#   FLEETWRIGHT_QT_ARCHIVE  a ready archive of it (default: ../shared/toolchains/ beside the repository)
#
# A ready archive is unpacked (a few seconds). Without one, or with --from-source, the same Qt is built from
# Debian 12's own source packages qt6-base and sqlite3: that downloads about 50 MB, needs about 3 GB of disk
# and takes about 15 minutes on 2 cores (20 with the download). Debian's own host Qt of the same version
# provides moc, uic and rcc. --no-source-build prints nothing and exits with 3 when only a build from source
# could give the Qt (the Windows check then leaves the program out). Everything but the printed line goes to
# standard error.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
QT_VERSION=6.4.2
SQLITE_VERSION=3.40.1
NAME=qt-$QT_VERSION-mingw64-static
ARCHIVE_SHA256=46f8631cced8a934b0a0aad3349bf0d8bf57a8b272bd18d9837d842f67fc8f81
cache=${FLEETWRIGHT_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/fleetwright}
archive=${FLEETWRIGHT_QT_ARCHIVE:-$root/../shared/toolchains/$NAME.tar.xz}
prefix=$cache/$NAME
from_source=0
source_build_allowed=1
case "${1-}" in
--from-source) from_source=1 ;;
--no-source-build) source_build_allowed=0 ;;
"") ;;
*)
    echo "usage: $0 [--from-source | --no-source-build]" >&2
    exit 2
    ;;
esac

say() { echo "windows-qt: $*" >&2; }

is_ready() { [ -f "$prefix/lib/cmake/Qt6/Qt6Config.cmake" ] && [ -f "$prefix/.complete" ]; }

if is_ready && [ $from_source -eq 0 ]; then
    echo "$prefix"
    exit 0
fi
mkdir -p "$cache"
rm -rf "$prefix"

# --- from the ready archive ----------------------------------------------------------------------------------
if [ $from_source -eq 0 ] && [ -f "$archive" ]; then
    say "unpacking $(basename "$archive") into $cache"
    if ! echo "$ARCHIVE_SHA256  $archive" | sha256sum --check --status; then
        say "$archive is not the archive this script knows (sha256 differs); build from source with --from-source"
        exit 1
    fi
    tar -xJf "$archive" -C "$cache"
    touch "$prefix/.complete"
    echo "$prefix"
    exit 0
fi

# --- from Debian's source packages ---------------------------------------------------------------------------
if [ $source_build_allowed -eq 0 ]; then
    say "no Qt for Windows in $cache and no archive at $archive"
    exit 3
fi
say "no archive at $archive: building Qt $QT_VERSION for MinGW-w64 from Debian's sources (about 15 minutes)"
"$root/scripts/install-deps.sh" windows-qt-source >&2
host_qt=$(dpkg-query -W -f='${Version}' qt6-base-dev 2>/dev/null || true)
case "$host_qt" in
$QT_VERSION+*) ;;
*)
    say "the host's qt6-base-dev is '$host_qt'; its moc, uic and rcc must be Qt $QT_VERSION (Debian 12)"
    exit 1
    ;;
esac

work=$cache/qt-source-build
rm -rf "$work"
mkdir -p "$work/apt/lists/partial" "$work/apt/parts" "$work/sources"
# The source packages come from the archives this machine already uses, through a private list of deb-src
# entries: the system's apt configuration is left alone.
{
    sed -n 's/^deb \(.*\)$/deb-src \1/p' /etc/apt/sources.list 2>/dev/null || true
    for file in /etc/apt/sources.list.d/*.list; do
        [ -f "$file" ] && sed -n 's/^deb \(.*\)$/deb-src \1/p' "$file"
    done
} >"$work/apt/sources.list"
for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] && sed 's/^Types: deb$/Types: deb-src/' "$file" >"$work/apt/parts/$(basename "$file")"
done
apt_private=(-o "Dir::Etc::SourceList=$work/apt/sources.list" -o "Dir::Etc::SourceParts=$work/apt/parts"
    -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache::pkgcache=" -o "Dir::Cache::srcpkgcache=")
apt-get "${apt_private[@]}" -q update >&2
(cd "$work/sources" && apt-get "${apt_private[@]}" -q --download-only source qt6-base sqlite3 >&2)

qt_orig=$(find "$work/sources" -maxdepth 1 -name "qt6-base_$QT_VERSION*.orig.tar.*" | head -n 1)
sqlite_orig=$(find "$work/sources" -maxdepth 1 -name "sqlite3_$SQLITE_VERSION*.orig.tar.*" | head -n 1)
if [ -z "$qt_orig" ] || [ -z "$sqlite_orig" ]; then
    say "the archives offer no qt6-base $QT_VERSION or sqlite3 $SQLITE_VERSION source (this wants Debian 12)"
    exit 1
fi

# SQLite: the amalgamation made from the original source, compiled with the options Qt's driver needs.
say "building SQLite $SQLITE_VERSION"
mkdir -p "$work/sqlite-src" "$work/sqlite-build" "$prefix/lib" "$prefix/include"
tar -xf "$sqlite_orig" -C "$work/sqlite-src" --strip-components=1
(cd "$work/sqlite-build" && "$work/sqlite-src/configure" --disable-tcl >&2 && make sqlite3.c >&2)
x86_64-w64-mingw32-gcc-posix -O2 -DNDEBUG -DSQLITE_THREADSAFE=1 -DSQLITE_ENABLE_COLUMN_METADATA \
    -DSQLITE_ENABLE_FTS3 -DSQLITE_ENABLE_FTS3_PARENTHESIS -DSQLITE_ENABLE_FTS5 -DSQLITE_ENABLE_RTREE \
    -DSQLITE_OMIT_COMPLETE -DSQLITE_OMIT_LOAD_EXTENSION -c "$work/sqlite-build/sqlite3.c" \
    -o "$work/sqlite-build/sqlite3.o"
x86_64-w64-mingw32-ar rcs "$prefix/lib/libsqlite3.a" "$work/sqlite-build/sqlite3.o"
cp "$work/sqlite-build/sqlite3.h" "$work/sqlite-build/sqlite3ext.h" "$prefix/include/"

# Qt: the original tarball as it is. Tablet events are off because Debian's source leaves out wintab.h;
# direct2d stays on (the windows platform needs its DirectWrite font database) but direct2d1_1 is off.
say "configuring and building Qt $QT_VERSION (the long part)"
mkdir -p "$work/qt-src" "$work/qt-build"
tar -xf "$qt_orig" -C "$work/qt-src" --strip-components=1
cmake -S "$work/qt-src" -B "$work/qt-build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/cmake" \
    -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_BENCHMARKS=OFF \
    -DFEATURE_opengl=OFF -DINPUT_opengl=no -DFEATURE_vulkan=OFF -DFEATURE_dbus=OFF -DFEATURE_concurrent=OFF \
    -DFEATURE_xml=OFF -DFEATURE_printsupport=OFF -DFEATURE_direct2d1_1=OFF -DFEATURE_jpeg=OFF -DFEATURE_gif=OFF \
    -DFEATURE_ico=OFF -DFEATURE_system_zlib=OFF -DFEATURE_system_pcre2=OFF -DFEATURE_system_png=OFF \
    -DFEATURE_system_freetype=OFF -DFEATURE_system_harfbuzz=OFF -DFEATURE_sql=ON -DFEATURE_sql_sqlite=ON \
    -DFEATURE_system_sqlite=ON -DSQLite3_INCLUDE_DIR="$prefix/include" -DSQLite3_LIBRARY="$prefix/lib/libsqlite3.a" \
    -DFEATURE_sql_odbc=OFF -DFEATURE_sql_psql=OFF -DFEATURE_sql_mysql=OFF -DFEATURE_sql_oci=OFF \
    -DFEATURE_sql_db2=OFF -DFEATURE_sql_ibase=OFF -DFEATURE_network=ON -DFEATURE_schannel=ON -DINPUT_openssl=no \
    -DFEATURE_widgets=ON -DFEATURE_testlib=ON -DFEATURE_tabletevent=OFF >&2
cmake --build "$work/qt-build" --parallel "$(nproc 2>/dev/null || echo 2)" >&2
cmake --install "$work/qt-build" >&2
rm -rf "$work"
touch "$prefix/.complete"
say "Qt $QT_VERSION for MinGW-w64 is in $prefix"
echo "$prefix"
