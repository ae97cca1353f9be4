# What the scripts at the root share; sourced by them, with their own folder as the current one.
# shellcheck shell=sh

# usage: prints the comment that opens the calling script, without its marks.
usage() {
    sed -n '2,/^[^#]/{s/^# \{0,1\}//p;/^#$/s/.*//p}' "$script" | sed '/^$/{N;/^\n$/D;}'
}

# help_or_go_on ARGUMENTS...: answers --help, -h and help with the usage and ends the script.
help_or_go_on() {
    for argument in "$@"; do
        case "$argument" in
            -h | --help | help) usage; exit 0 ;;
        esac
    done
}

# wrong_usage WORDS...: for arguments that mean nothing: what is wrong, how to use the script, exit code 2.
wrong_usage() {
    echo "$*" >&2
    usage >&2
    exit 2
}

# build_with_progress LOG ABOUT COMMAND...: runs a build, its output into LOG, and tells now and then how far it is. ABOUT
# says in words what is built and about how long it takes. On failure: the end of the log, and the command's exit code.
build_with_progress() {
    log="$1"; about="$2"; shift 2
    echo "== $about"
    begun="$(date +%s)"
    # The exit code travels in the output, since of a pipe only the last command's is told.
    { "$@" 2>&1 && echo "build-exit-code 0" || echo "build-exit-code $?"; } | awk -v log_file="$log" -v name="$(basename "$log" -build.log)" '
        BEGIN { printf "" >log_file }
        /^build-exit-code / { code = $2; next }
        { print >log_file }
        match($0, /^\[[0-9]+\/[0-9]+\]/) {
            split(substr($0, 2, RLENGTH - 2), steps, "/")
            if (steps[2] >= 20 && int(10 * steps[1] / steps[2]) > tenth) {
                tenth = int(10 * steps[1] / steps[2])
                printf "   %s: %d of %d steps\n", name, steps[1], steps[2]
                fflush()
            }
        }
        END { exit code }' || {
        code=$?
        tail -n 60 "$log"
        echo "The whole log: $log" >&2
        return "$code"
    }
    echo "   $(basename "$log" -build.log): built in $(($(date +%s) - begun)) s"
}
