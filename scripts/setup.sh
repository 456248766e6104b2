#!/usr/bin/env bash
# Installs everything that building, testing and trying needs on a bare Debian 12; with --fuzz also what fuzzing needs.
# Safe to run again: it asks apt only when a package is missing.
set -euo pipefail

packages=(
    g++ cmake ninja-build ccache mold git python3 clang-format clang-tidy
    qt6-base-dev libgl1-mesa-dev
    unixodbc-dev tdsodbc freetds-dev freetds-bin
    libsqlite3-dev libicu-dev libssl-dev libcurl4-openssl-dev nlohmann-json3-dev libsimpleini-dev pkg-config libsmbclient-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    python3-pyodbc python3-pymssql python3-tds python3-pkg-resources python3-xlrd libdbd-sybase-perl unixodbc
    default-jre-headless libjtds-java bsh openssl
    libxlsxwriter-dev python3-aiosmtpd unzip samba smbclient
    dpkg-dev fakeroot file g++-mingw-w64-x86-64-posix
    xvfb xauth xdotool x11-session-utils x11-xserver-utils imagemagick fonts-dejavu-core
)
[ "${1:-}" != --fuzz ] || packages+=(clang-14 libclang-rt-14-dev)

missing=()
for package in "${packages[@]}"; do
    [ "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" = "install ok installed" ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
echo "installing: ${missing[*]}"
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
