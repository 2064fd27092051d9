#!/bin/sh
# Makes the reference of the installed headers, build-reference/html/index.html. Fails if anything is undocumented.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh doxygen
doxygen docs/Doxyfile
