# Sourced by scripts/arm-test: memory and code size of what the packages contain.
# shellcheck shell=bash
# shellcheck disable=SC2016,SC2154 # backticks are part of the text; scripts/arm-test sets the names

tripletOf() {
    dpkg-architecture --host-arch "$1" --query DEB_HOST_MULTIARCH 2>/dev/null
}

# The one for this machine is that of scripts/bench.
buildOf() {
    if [ "$1" = "$native" ]; then echo build/bench; else echo "build/$1"; fi
}

# What an installation of that architecture has.
stage() {
    local build
    build=$PWD/$(buildOf "$1")
    rm -rf "${work:?}/$1"
    for component in runtime platform development command system; do
        DESTDIR=$PWD/$work/$1 cmake --install "$build" --prefix /usr --component "$component" >/dev/null
    done
}

# compileLister ARCHITECTURE TREE: as another project would, with what is installed in the tree.
compileLister() {
    local triplet libraries root=""
    triplet=$(tripletOf "$1")
    [ "$1" = "$native" ] || root=$PWD/build/root-$1
    libraries=$(dirname "$(find "$2/usr/lib" -name libzamofirewall.so)")
    "$triplet-g++" ${root:+"--sysroot=$root"} -std=c++17 -O2 -isystem "$root/usr/include/jsoncpp" \
        -I "$2/usr/include" scripts/arm-test.d/listProfiles.cpp -o "$2/listProfiles" \
        -L "$libraries" "-Wl,-rpath-link,$libraries" -Wl,--as-needed -lzamofirewall -ljsoncpp
}

# textAndData ARCHITECTURE FILE...: the sums in KiB, as cells of a table.
textAndData() {
    "$(tripletOf "$1")-size" --format=berkeley "${@:2}" |
        awk 'NR > 1 { text += $1; data += $2 + $3 }
            END { printf " %.0f | %.0f |", text / 1024, data / 1024 }'
}

# sizeRow NAME PATTERN...: below the directory of an architecture
sizeRow() {
    local arch pattern files
    printf '| %s |' "$1"
    for arch in "${all[@]}"; do
        files=()
        for pattern in "${@:2}"; do
            # shellcheck disable=SC2206 # a pattern
            files+=($work/$arch/$pattern)
        done
        textAndData "$arch" "${files[@]}"
    done
    echo
}

# In a private host with the first profile, as after an installation. The median of five runs.
memoryOf() {
    local tree=$PWD/$work/$native
    for _ in 1 2 3 4 5; do
        LD_LIBRARY_PATH=$tree/usr/lib scripts/sandbox --files "$tree" "$PWD/$work/peak" "$@"
    done | sort -n | sed -n 3p
}

memoryRow() {
    local kib
    kib=$(memoryOf "${@:2}") || die "could not measure: $1"
    printf '| %s | %s |\n' "$1" "$(sed -E 's/([0-9])([0-9]{3})$/\1,\2/' <<<"$kib")"
}

printSizes() {
    local arch tree=$PWD/$work/$native
    gcc -O2 -static scripts/arm-test.d/peak.c -o "$work/peak"
    echo 'int main() {}' | g++ -x c++ -O2 - -Wl,--no-as-needed -o "$work/nothing"
    cat <<'TEXT'
`scripts/arm-test --sizes` prints this section. Code size is what `size` tells of the presets
`release`, `arm64` and `armhf`, in KiB: text with constants, and data with zeros.

TEXT
    printf '| |'
    printf ' %s: text | data |' "${all[@]}"
    printf '\n|---|'
    for arch in "${all[@]}"; do printf -- '---|---|'; done
    echo
    sizeRow '`libzamofirewall`' 'usr/lib/libzamofirewall.so.*.*'
    sizeRow 'the five platform libraries' 'usr/lib/libzamo[cnsk]*.so.*.*'
    sizeRow '`zamofw`' usr/sbin/zamofw
    sizeRow '`zamonetdtool`, static' usr/zamo/sbin/zamonetdtool
    sizeRow '`zamolock`' usr/zamo/sbin/zamolock
    cat <<TEXT

The largest resident memory that a process has had, in KiB, the system's shared libraries included.
It is measured on $native alone: an emulator's memory is not that of the program in it.

| | KiB |
|---|---|
TEXT
    memoryRow 'a C++ program that does nothing' "$PWD/$work/nothing"
    memoryRow 'a program that lists one profile with `libzamofirewall`' "$tree/listProfiles"
    memoryRow '`zamofw --version`' "$tree/usr/sbin/zamofw" --version
    memoryRow '`zamofw status`' "$tree/usr/sbin/zamofw" status
}
