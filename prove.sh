#!/bin/sh
# Proves the plug-in's arithmetic on numbers from files and from the host for all inputs, and shows for each of its checks
# an input that it is needed for. Prints a table; docs/proofs.md says what is stated. Exit code 1 when a statement is false, a
# check is not needed, or the solver does not decide within the limit.
#
#   ./prove.sh                       everything: minutes
#   ./prove.sh --fast                without what has floating point or long divisions: seconds
#   ./prove.sh [--seconds N] [NAME]  N seconds for each question, 600 by default; statements whose names begin with NAME
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"
ORVANTIS_EXTRA_PACKAGES="libz3-dev" scripts/install-packages.sh
mkdir -p build
cmake --preset linux-quick >build/prove-configure.log 2>&1 || { cat build/prove-configure.log; exit 1; }
build_with_progress build/prove-build.log "proofs: build (a minute when nothing is cached)" \
    cmake --build --preset linux-quick --target proofs
exec build/linux-quick/bin/proofs --seconds 600 "$@"
