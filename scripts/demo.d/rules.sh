# The rules, as the kernel lists them.
# shellcheck shell=bash

listRules() {
    local tool
    for tool in iptables ip6tables; do
        "$tool" -S | sed "s/^/$tool /"
    done
}

showRules() {
    local tool
    for tool in iptables ip6tables; do
        echo "\$ $tool -S"
        "$tool" -S
    done
}

run() {
    listRules >before.rules
    expect "$*" show "$@"
}

# Shows what the last command changed. FORWARD_FIREWALL gets the same rules as INPUT_FIREWALL.
showChanges() {
    diff --unified=0 before.rules <(listRules) | grep '^[-+]ip.* INPUT_FIREWALL' || true
}

chainsAreEmpty() {
    ! listRules | grep -E -- '-A (INPUT_FIREWALL|FORWARD_FIREWALL|FIREWALL_RELOADING) '
}

policiesAreOpen() {
    [ "$(listRules | grep -cE -- '-P (INPUT|FORWARD) ACCEPT')" = 4 ]
}

logHasCounted() {
    iptables --verbose -S INPUT_FIREWALL | grep -E -- '-c [1-9][0-9]* .*-j LOG' >/dev/null
}
