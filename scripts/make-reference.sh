#!/bin/sh
# Makes the reference of the installed headers, build-reference/html/index.html; fails at anything left undocumented.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh doxygen
doxygen docs/Doxyfile
