# What other programs do: edit all profiles, ask what is blocked, export and import.
# shellcheck shell=bash

reserveService() {
    step "A service that asks for its port in every profile"
    expectConnections <<<'dropped tcp 10.1.0.2 873 before rsync asks'
    run service-access allow rsync
    showChanges
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 873 reserved service rsync
passes tcp fd01::2 873 reserved service rsync
TABLE
    run firewall-control use closed
    expectConnections <<<'passes tcp 10.1.0.2 873 reserved in the other profile too'
    run service-access remove rsync
    expectConnections <<<'dropped tcp 10.1.0.2 873 removed again'
    run firewall-control use office
    expectConnections <<<'dropped tcp 10.1.0.2 873 removed from the other profile too'
}

renameAdapter() {
    step "An adapter with a new name"
    expectConnections <<<'dropped tcp 10.2.0.2 21 denied service ftp on eth1'
    show ip link set eth1 down
    show ip link set eth1 name lan1
    show ip link set lan1 up
    expectConnections <<<'passes tcp 10.2.0.2 21 no rule knows lan1'
    run firewall-control rename eth1 lan1
    showChanges
    expectConnections <<'TABLE'
dropped tcp 10.2.0.2 21 denied service ftp on lan1
passes tcp 10.2.0.2 80 default policy of lan1
TABLE
}

askWhatIsBlocked() {
    step "Questions, and whether the answers are true"
    expectAnswer "allowed" firewall-control ask eth0 443
    expectAnswer "blocked" firewall-control ask eth0 80
    expectAnswer "blocked for some addresses" firewall-control ask eth0 21
    expectAnswer "blocked" firewall-control ask lan1 21
    expectAnswer "allowed" service-access check ssh eth0
    expectAnswer "blocked" service-access check http eth0
    expectAnswer "allowed" service-access check http lan1
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 443 allowed on eth0
dropped tcp 10.1.0.2 80 blocked on eth0
passes tcp 10.1.0.20 21 blocked on eth0 for some addresses
dropped tcp 10.1.0.150 21 blocked on eth0 for some addresses
dropped tcp 10.2.0.2 21 blocked on lan1
passes tcp 10.1.0.2 22 service ssh allowed on eth0
passes tcp 10.2.0.2 80 service http allowed on lan1
TABLE
}

moveConfiguration() {
    step "The configuration, exported, wiped out and imported"
    listRules >exported.rules
    run firewall-control export backup.json
    run firewall-control disable
    expect "the firewall's chains are empty" chainsAreEmpty
    show find /usr/zamo/etc/firewall.d -type f -delete
    run firewall-control import backup.json
    expectAnswer "enabled, profile office" firewall-control status
    run firewall-control reload
    expect "the rules are those of the export" diff exported.rules <(listRules)
    expectConnections <<'TABLE'
passes tcp 10.1.0.20 21 imported profile
dropped tcp 10.1.0.2 21 imported profile
TABLE
}
