# Range files as the kernel's match reads them, and clients inside and outside of them.
# shellcheck shell=bash

RANGES=/usr/share/xt_geoip

# writeRanges CODE FIRST-LAST...: the addresses in network order, which current xtables-addons wants
writeRanges() {
    mkdir -p "$RANGES"
    python3 - "$RANGES/$1" "${@:2}" <<'PYTHON'
import ipaddress, sys
files = {4: b"", 6: b""}
for text in sys.argv[2:]:
    first, last = map(ipaddress.ip_address, text.split("-"))
    files[first.version] += first.packed + last.packed
for version, content in files.items():
    with open(f"{sys.argv[1]}.iv{version}", "wb") as file:
        file.write(content)
PYTHON
}

# The library reads little-endian words. The ends of XA's ranges are the same words in both orders, so
# that the command and the kernel see the same country.
makeCountries() {
    writeRanges XA 10.7.7.10-10.8.8.10 fd01:1fd::1000:10-fd01:1fd::2000:20
    writeRanges XB 10.9.1.0-10.9.1.127 fd01:2::1:0-fd01:2::1:ffff
    writeRanges XC 10.6.6.10-10.6.6.10 fd01:1fd::30:300c-fd01:1fd::30:300c
}

# addClients NETWORK HOST...
addClients() {
    local host
    ip addr add "$1.1/24" dev eth0
    for host in "${@:2}"; do
        ip -n client addr add "$1.$host/24" dev eth0
    done
}

# The host answers to IPv6 packets with its only address, the one that they were sent to.
makeClients() {
    local address
    ip netns add client
    joinClient eth0 10.7.7 9 10 200
    addClients 10.8.8 10 11
    addClients 10.9.1 5 200
    ip addr add fd01::1/64 dev eth0 nodad
    for address in fd01:1fd:: fd01:2::; do
        ip route add "$address/64" dev eth0
    done
    for address in fd01::2 fd01:1fd::1000:{f,10} fd01:1fd::1800:1 fd01:1fd::2000:{20,21} \
        fd01:2::1:5 fd01:2::2:5; do
        ip -n client addr add "$address/64" dev eth0 nodad
    done
}
