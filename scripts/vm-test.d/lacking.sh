# A machine on which nobody has built xtables-addons, and one that lacks more than that.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

withoutAddons() {
    step "Without xtables-addons"
    zamofw-chains
    expectOutput 0 "the firewall is enabled" zamofw enable
    expect "the kernel has the other modules" allLoaded coreModules
    expect "and xt_mac" isLoaded xt_mac
    expect "it has no xt_geoip" not isLoaded xt_geoip
    expect "all the same it is noted" noteSays firewall yes
    expectOutput 0 "nothing is wrong" zamofw doctor
    expectOutput 0 "is in force" zamofw reload
}

countryRule() {
    step "A country rule"
    makeCountries
    zamofw profile create lands
    zamofw rule add lands global allow --from-country XA
    expectOutput 1 "rule 1 of global" zamofw rehearse lands
    listRules >before.rules
    expectOutput 3 "rule 1 of global" zamofw profile use lands
    expectOutput 3 "geoip" zamofw profile use lands
    expect "the rules are the old ones, to the last" diff before.rules <(listRules)
    expectOutput 0 "profile   default" zamofw status
    step "The same, line by line"
    zamofw profile use lands --no-reload
    expectOutput 3 "geoip" zamofw reload --sequential
    expect "the firewall's chains are empty" chainsAreEmpty
    expect "INPUT and FORWARD accept" policiesAreOpen
    expectOutput 0 "firewall  disabled" zamofw status
    zamofw profile use default --no-reload
}

# enableFails TEXT
enableFails() {
    expectOutput 3 "$1" zamofw enable
    expectOutput 0 "firewall  disabled" zamofw status
    expect "INPUT and FORWARD accept" policiesAreOpen
}

withoutSetting() {
    step "Without the setting that lets the firewall do without xtables-addons"
    mv /etc/modprobe.d/zamofirewall.conf .
    enableFails "compat_xtables: not among the modules of kernel $(uname -r)"
    mv zamofirewall.conf /etc/modprobe.d
    expectOutput 0 "the firewall is enabled" zamofw enable
    expectOutput 0 "the firewall is disabled" zamofw disable
}

unknownModule() {
    step "A list with a module that the kernel lacks"
    cp "$LIST" list
    sed -i 's/xt_LOG.ko/xt_LOG.ko xt_nosuch.ko/' "$LIST"
    enableFails "xt_nosuch: not among the modules of kernel"
    echo "install xt_nosuch /bin/true" >/etc/modprobe.d/vm-test.conf
    expectOutput 0 "the firewall is enabled" zamofw enable
    expectOutput 0 "nothing is wrong" zamofw doctor
    rm /etc/modprobe.d/vm-test.conf
    expectOutput 1 "does not have xt_nosuch.ko" zamofw doctor
    cp list "$LIST"
    expectOutput 0 "nothing is wrong" zamofw doctor
}

# As after an upgrade that has removed the files of the kernel that runs.
withoutTree() {
    step "Without the files of the modules"
    mv "/usr/lib/modules/$(uname -r)" modules
    rm "$NOTE"
    expectOutput 0 "is in force" zamofw reload
    expectOutput 0 "the firewall is disabled" zamofw disable
    expect "unused modules are gone all the same" not isLoaded xt_mac
    enableFails "not among the modules of kernel"
    mv modules "/usr/lib/modules/$(uname -r)"
    expectOutput 0 "the firewall is enabled" zamofw enable
    expectOutput 0 "the firewall is disabled" zamofw disable
}

runScenario() {
    withoutAddons
    countryRule
    withoutSetting
    unknownModule
    withoutTree
}
