# The kernel's modules, and the firewall's list of them.
# shellcheck shell=bash disable=SC2317 # expect calls the functions

NOTE=/tmp/iptables_serv_mod_list
LIST=/usr/zamo/etc.defaults/iptables_modules_list
ADDONS=(compat_xtables xt_geoip)

# modulesOf GROUP...: their names, a line each
modulesOf() {
    local group
    for group; do
        sed -n "s/^$group=\"\(.*\)\"/\1/p" "$LIST"
    done | tr ' ' '\n' | sed 's/\.ko$//'
}

coreModules() {
    modulesOf KERNEL_MODULES_CORE KERNEL_MODULES_COMMON IPV6_MODULES
}

natModules() {
    modulesOf KERNEL_MODULES_NAT
}

firewallModules() {
    coreModules
    printf '%s\n' "${ADDONS[@]}" xt_mac
}

# Those of standard input that the kernel has loaded.
loadedOf() {
    grep -xF "$(cut -d ' ' -f 1 /proc/modules)" || [ $? = 1 ]
}

notLoadedOf() {
    grep -vxF "$(cut -d ' ' -f 1 /proc/modules)" || [ $? = 1 ]
}

isLoaded() {
    grep -q "^$1 " /proc/modules
}

not() {
    ! "$@"
}

# allLoaded|noneLoaded LIST: the function that prints names
allLoaded() {
    local missing
    missing=$("$1" | notLoadedOf) || return
    [ -z "$missing" ] || ! echo "not loaded: $missing"
}

noneLoaded() {
    local loaded
    loaded=$("$1" | loadedOf) || return
    [ -z "$loaded" ] || ! echo "loaded: $loaded"
}

# Modules that nothing uses any more are gone.
restIsInUse() {
    local name loaded
    loaded=$("$1" | loadedOf) || return
    for name in $loaded; do
        [ "$(awk -v name="$name" '$1 == name { print $3 }' /proc/modules)" != 0 ] || {
            echo "nothing uses $name"
            return 1
        }
    done
}

noteSays() {
    [ "$(sed -n "s/^$1=\"\?\([a-z]*\)\"\?$/\1/p" "$NOTE")" = "$2" ]
}

# platformModules insert|remove FILE...: through libzamokm
platformModules() {
    python3 - "$@" <<'PYTHON'
import ctypes, sys
core = ctypes.CDLL("libzamocore.so.7")
km = ctypes.CDLL("libzamokm.so.7")
core.VLIBCSzListAlloc.restype = ctypes.c_void_p
files = ctypes.c_void_p(core.VLIBCSzListAlloc(1024))
for name in sys.argv[2:]:
    assert core.VLIBCSzListPush(ctypes.byref(files), name.encode()) >= 0
call = {"insert": km.VLIBIptablesModInsert, "remove": km.VLIBIptablesModRemove}[sys.argv[1]]
sys.exit(0 if call(b"vm-test", files) == 0 else 1)
PYTHON
}

# libraryModules FUNCTION SERVICE: one of the library's functions for C
libraryModules() {
    python3 -c 'import ctypes, sys
library = ctypes.CDLL("libzamofirewall.so.7")
sys.exit(0 if library[sys.argv[1]](sys.argv[2].encode()) == 0 else 1)' "$@"
}
