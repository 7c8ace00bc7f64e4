# Expectations: noted on the way and listed at the end.
# shellcheck shell=bash

checked=0
notes=()
failures=()

step() {
    printf '\n== %s\n' "$1"
    notes+=("== $1")
}

note() {
    checked=$((checked + 1))
    notes+=("$(printf '%-4s %3d %s' "$1" "$checked" "$2")")
    [ "$1" = ok ] || failures+=("${notes[-1]}")
}

# expect TEXT COMMAND [ARGUMENT]...
expect() {
    if "${@:2}"; then
        note ok "$1"
    else
        note FAIL "$1"
    fi
}

show() {
    echo "\$ $*"
    "$@"
}

# expectAnswer ANSWER COMMAND [ARGUMENT]...
expectAnswer() {
    local answer
    answer=$(show "${@:2}") || true
    echo "$answer"
    answer=${answer#*$'\n'}
    expect "${*:2}: $1" test "$answer" = "$1"
}

# expectOutput STATUS TEXT COMMAND [ARGUMENT]...: it ends with this status, and prints this text.
expectOutput() {
    local status=0 output
    output=$("${@:3}" 2>&1) || status=$?
    printf '$ %s\n%s\n' "${*:3}" "$output"
    if [ "$status" = "$1" ] && [[ $output = *"$2"* ]]; then
        note ok "${*:3}: $2"
    else
        note FAIL "${*:3}: $2, but: exit status $status"
    fi
}

# The library gives the reason for a failure in the system log only.
collectSystemLog() {
    socat -u UNIX-RECV:/dev/log OPEN:system.log,creat,append &
}

summarize() {
    printf '\nExpectations\n'
    printf '%s\n' "${notes[@]}"
    if [ ${#failures[@]} -gt 0 ]; then
        printf '\nThe system log\n'
        sed 's/<[0-9]*>/\n/g' system.log
        printf '\n\nWhat failed\n'
        printf '%s\n' "${failures[@]}"
    fi
    printf '\n%s expectations, %s failed\n' "$checked" "${#failures[@]}"
    [ ${#failures[@]} -eq 0 ] && [ "$checked" -gt 0 ]
}
