#!/bin/sh
# Turns the places of a crash into functions and lines of the sources.
#
#   scripts/symbolize.sh [--symbols ZIP|FOLDER]... DUMP            a minidump: what happened, and the calls that led there
#   scripts/symbolize.sh [--symbols ZIP|FOLDER]... LOG             a text: every "module+0xoffset" in it, and the report of
#                                                                  an application error as the event viewer shows it
#   scripts/symbolize.sh [--symbols ZIP|FOLDER]... MODULE+OFFSET   one place, for example ImporterOrvantis.prm+0x1a2b
#
# Symbols are those of the release that crashed: its symbols zip, or a folder laid out as a symbol store. Without --symbols:
# the store of the build in this checkout. Runs on any system with Python and llvm-symbolizer; nothing is downloaded.
# Exit code 1: nothing could be turned into a line. 2: wrong usage, or an input that cannot be read.
set -eu
script="$(realpath "$0")"
here="$(dirname "$script")"
. "$here/common.sh"
[ "$#" -gt 0 ] || wrong_usage "symbolize.sh: a dump, a log or a place is needed"
help_or_go_on "$@"
PYTHONDONTWRITEBYTECODE=1 exec python3 "$here/symbolizing/symbolize.py" "$@"
