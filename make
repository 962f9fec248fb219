#!/bin/sh
# Runs make, which a bare Debian lacks: where it is missing, it is installed first, with all that the
# build needs. Used like make itself: ./make run
set -eu

cd "$(dirname "$0")"
command -v make >/dev/null || tools/install-packages build
exec make "$@"
