#!/bin/sh
# Do the tests notice? Changes the plug-in's sources in small ways (a relation, a bound, a constant, a condition, a removed
# statement or lock, swapped arguments, a text), one at a time, and runs the native tests that have the changed file. The
# sources themselves stay as they are. Exit code 1 when a change goes unnoticed that tests/mutation/explained.txt does not
# explain, or when an explanation there has become wrong. docs/mutation.md says more.
#
#   ./mutate.sh                         every mutant: hours
#   ./mutate.sh avi                     those of one folder, or of one file: avi/avi_index.cpp
#   ./mutate.sh --sample 200 --seed 7   200 of them by chance; the same seed takes the same
#   ./mutate.sh --explained             those that are explained: is each still unnoticed?
#   ./mutate.sh --list avi              only says which there are
#
#   --kind KIND   only relation, arithmetic, constant, condition, statement, lock, arguments or text
#   --jobs N      as many at a time (1)
#   --fresh       also those that earlier runs decided on the same code, and all tests; else survivors see only new tests
#   --known       tries nothing, adds up what earlier runs decided
#   --docs        writes the table into docs/mutation.md
#
# Outcomes are kept in build/mutation/, so that a run that was ended goes on where it was.
set -eu
script="$(realpath "$0")"
cd "$(dirname "$script")"
. scripts/common.sh
help_or_go_on "$@"
previous=""
for argument in "$@"; do
    case "$previous" in
        --sample | --seed | --jobs | --kind) ;;
        *)
            case "$argument" in
                --sample | --seed | --jobs | --kind | --explained | --fresh | --known | --list | --docs) ;;
                -*) wrong_usage "mutate.sh: unknown argument: $argument" ;;
                *) [ -e "plugin/${argument#plugin/}" ] || wrong_usage "mutate.sh: there is no plugin/${argument#plugin/}" ;;
            esac
            ;;
    esac
    previous="$argument"
done
ORVANTIS_EXTRA_PACKAGES="" scripts/install-packages.sh

# The programs that mutants are linked into, and the clips that they read. Configured anew, so that all that there are by now
# are asked for.
cmake --preset linux-quick -B build/linux-mutation -DORVANTIS_EXCHANGEABLE=ON >/dev/null
# shellcheck disable=SC2046 # a list of words on purpose
cmake --build build/linux-mutation --target $(python3 scripts/mutation/build_graph.py build/linux-mutation) -- --quiet
# The distribution's bindings of libclang belong to the distribution's Python.
exec /usr/bin/python3 scripts/mutation/mutate.py "$@"
