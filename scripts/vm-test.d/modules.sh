# The list of modules, loaded and unloaded.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

platform() {
    step "The platform's functions"
    expect "at first the kernel has none of the list" noneLoaded firewallModules
    expect "two are loaded, and an empty name is passed over" \
        platformModules insert xt_mac.ko "" xt_geoip.ko
    expect "xt_mac is there" isLoaded xt_mac
    expect "xt_geoip is there" isLoaded xt_geoip
    expect "loaded again they stay" platformModules insert xt_geoip.ko xt_mac.ko
    expect "a module that the tree does not have fails" not platformModules insert nosuch.ko
    expect "those after it are not loaded" not platformModules insert nosuch.ko xt_iprange.ko
    expect "xt_iprange is not there" not isLoaded xt_iprange
    expect "two are removed" platformModules remove xt_mac.ko xt_geoip.ko
    expect "xt_mac is gone" not isLoaded xt_mac
    expect "xt_geoip is gone" not isLoaded xt_geoip
    expect "what is not loaded counts as removed" platformModules remove xt_mac.ko nosuch.ko
}

# One that a rule uses stays, and that is no failure.
inUse() {
    step "A module that a rule uses"
    iptables -N FOREIGN
    iptables -A FOREIGN -m mac --mac-source 02:00:00:00:00:01 -j DROP
    expect "it is to be removed" platformModules remove xt_mac.ko
    expect "it stays" isLoaded xt_mac
    iptables -F FOREIGN
    expect "it is to be removed again" platformModules remove xt_mac.ko
    expect "it is gone" not isLoaded xt_mac
    iptables -X FOREIGN
}

atOnce() {
    local jobs=() job result=0
    step "Eight programs load at the same time"
    for _ in {1..8}; do
        platformModules insert compat_xtables.ko xt_geoip.ko xt_mac.ko &
        jobs+=($!)
    done
    for job in "${jobs[@]}"; do wait "$job" || result=1; done
    expect "all of them succeed" test "$result" = 0
    expect "xt_geoip is there" isLoaded xt_geoip
    expect "they can be removed" platformModules remove xt_mac.ko xt_geoip.ko compat_xtables.ko
    expect "compat_xtables is gone" not isLoaded compat_xtables
}

groups() {
    step "The library's groups"
    expect "the core modules are loaded" libraryModules ZAMOIptablesCodeModeLoad vm-test
    expect "the kernel has them" allLoaded coreModules
    expect "but no others of the list" not isLoaded xt_geoip
    expect "it is noted" noteSays vm-test yes
    expect "the core modules are removed" libraryModules ZAMOIptablesCoreModUnload vm-test
    expect "what is left is in use" restIsInUse coreModules
    expect "that is noted" noteSays vm-test no
    expect "with those for NAT" libraryModules ZAMOIptablesNATModLoad vm-test
    expect "the kernel has the core modules" allLoaded coreModules
    expect "and those for NAT" allLoaded natModules
    expect "all of them are removed" libraryModules ZAMOIptablesNATModUnload vm-test
    expect "none for NAT is left" noneLoaded natModules
    rm "$NOTE"
}

withFirewall() {
    step "Switched on and off"
    zamofw-chains
    expectOutput 0 "the firewall is enabled" zamofw enable
    expect "the kernel has the whole list" allLoaded firewallModules
    expect "it is noted" noteSays firewall yes
    expectOutput 0 "nothing is wrong" zamofw doctor
    expectOutput 0 "is in force" zamofw reload
    expectOutput 0 "the firewall is disabled" zamofw disable
    expect "that is noted" noteSays firewall no
    expect "what is left is in use" restIsInUse firewallModules
    expect "xt_geoip is gone" not isLoaded xt_geoip
    expect "xt_mac is gone" not isLoaded xt_mac
    expectOutput 0 "nothing is wrong" zamofw doctor
}

wrongNote() {
    step "A note that the kernel belies"
    expectOutput 0 "the firewall is enabled" zamofw enable
    show rmmod xt_geoip xt_mac xt_iprange
    # What an "install" line of modprobe.d stands for cannot be told, so xt_geoip may be missing.
    expectOutput 1 "does not have xt_iprange.ko, xt_mac.ko:" zamofw doctor
    expectOutput 1 '"kind":"modules-note"' zamofw --json doctor
    expectOutput 0 "is in force" zamofw reload
    expect "a reload relies on the note" not isLoaded xt_mac
    expectOutput 0 "0 left to mend" zamofw doctor --repair
    expect "the repair loads them" allLoaded firewallModules
    expectOutput 0 "nothing is wrong" zamofw doctor
    show sed -i '/^firewall/s/yes/no/' "$NOTE"
    expectOutput 1 "are not loaded, and its rules are in force" zamofw doctor
    expectOutput 0 "0 left to mend" zamofw doctor --repair
    expect "the note is right again" noteSays firewall yes
    rm "$NOTE"
    expectOutput 0 "nothing is wrong" zamofw doctor
    expectOutput 0 "is in force" zamofw reload
    expect "a reload writes the note" noteSays firewall yes
    expectOutput 0 "the firewall is disabled" zamofw disable
}

settings() {
    step "What modprobe.d says"
    echo "blacklist xt_mac" >/etc/modprobe.d/vm-test.conf
    expectOutput 0 "the firewall is enabled" zamofw enable
    expect "a blacklisted module is not loaded" not isLoaded xt_mac
    expectOutput 0 "nothing is wrong" zamofw doctor
    expectOutput 0 "the firewall is disabled" zamofw disable
    echo "install xt_mac /bin/false" >/etc/modprobe.d/vm-test.conf
    expectOutput 3 "xt_mac: cannot be loaded: its modprobe.d command failed" zamofw enable
    expectOutput 0 "firewall  disabled" zamofw status
    expect "the policies are open" policiesAreOpen
    rm /etc/modprobe.d/vm-test.conf
    expectOutput 0 "the firewall is enabled" zamofw enable
    # The note that they are loaded is from the attempt that failed.
    expectOutput 1 "does not have xt_mac.ko:" zamofw doctor
    expectOutput 0 "0 left to mend" zamofw doctor --repair
    expect "without the setting it is loaded" allLoaded firewallModules
    expectOutput 0 "the firewall is disabled" zamofw disable
}

runScenario() {
    platform
    inUse
    atOnce
    groups
    withFirewall
    wrongNote
    settings
}
