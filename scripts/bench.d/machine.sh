# shellcheck shell=bash
# What a measurement says of the machine: only what matters for the numbers, and no names.

# More work of other programs than this, in percent of one processor, disturbs a measurement.
# shellcheck disable=SC2034 # for the scripts that read this file
QUIET=25

# machineText BUILD: processors, system and compiler of a build.
machineText() {
    local compiler=("$1"/CMakeFiles/*/CMakeCXXCompiler.cmake) kernel
    kernel=$(uname -r)
    # shellcheck source=/dev/null
    echo "$(nproc) processors, $(. /etc/os-release && echo "${NAME% GNU/Linux} $VERSION_ID")," \
        "Linux ${kernel%%[^0-9.]*}, iptables $(iptables --version | sed 's/.* v\([0-9.]*\).*/\1/')," \
        "$(sed -n 's/set(CMAKE_CXX_COMPILER_ID "\(.*\)")/\1/p' "${compiler[0]}") C++" \
        "$(sed -n 's/set(CMAKE_CXX_COMPILER_VERSION "\(.*\)")/\1/p' "${compiler[0]}")"
}

# In clock ticks: the time, the work of all processors, and that of this shell with its ended children.
workSoFar() {
    awk -v "ticks=$(getconf CLK_TCK)" '
        FILENAME == "/proc/uptime" { printf "%.0f ", $1 * ticks }
        $1 == "cpu" { printf "%.0f ", $2 + $3 + $4 + $7 + $8 + $9 }
        FILENAME ~ /[0-9]/ { print $14 + $15 + $16 + $17 }
    ' /proc/uptime /proc/stat "/proc/$$/stat"
}

# workOfOthers BEFORE: what other programs, and other machines on the same processors, have used since
# then, in percent of one processor.
workOfOthers() {
    awk '{
        others = ($5 - $2 - ($6 - $3)) * 100 / ($4 > $1 ? $4 - $1 : 1)
        print (others > 0 ? int(others) : 0)
    }' <<<"$1 $(workSoFar)"
}
