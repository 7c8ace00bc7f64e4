# From a profile file to rules in the kernel.
# shellcheck shell=bash

makeChains() {
    step "The chains, made as at boot"
    run zamofw-chains
    showRules
}

useShippedProfile() {
    step "The shipped profile locks nobody out"
    expect "10.1.0.150 opens a session" openSession early 10.1.0.150
    run firewall-control enable
    expectAnswer "enabled, profile default" firewall-control status
    showChanges
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 22 reserved service ssh
passes tcp 10.1.0.2 8080 reserved service management
passes tcp 10.1.0.2 80 no rule
passes tcp fd01::2 80 no rule
passes tcp 10.2.0.2 80 no rule
TABLE
    expect "the session of 10.1.0.150 goes on" sessionAnswers early "$RECOVERY"
}

useProfileWithEveryKindOfRule() {
    step "A profile with every kind of rule"
    run firewall-control store office.json
    run firewall-control use office
    showRules
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 22 named service on every adapter
passes tcp fd01::2 22 named service on every adapter
passes tcp 10.1.0.2 21 one address
dropped tcp 10.1.0.20 21 another address
passes tcp 10.1.0.20 23 range of addresses
dropped tcp 10.1.0.150 23 outside the range
passes tcp 10.1.0.150 25 subnet, logged
dropped tcp 10.1.0.20 25 outside the subnet
passes tcp 10.1.0.2 443 port list
passes tcp 10.1.0.2 8001 range in the port list
passes tcp fd01::2 8002 end of that range
dropped tcp 10.1.0.2 8003 beyond that range
dropped tcp fd01::2 8003 beyond that range
passes tcp fd01::2 9418 one IPv6 address
dropped tcp fd01::3 9418 another IPv6 address
passes udp 10.1.0.2 53 named service dns
passes udp fd01::2 53 named service dns
dropped udp 10.1.0.2 123 default policy of eth0
dropped udp fd01::2 123 default policy of eth0
passes icmp 10.1.0.2 ping named service icmp
passes icmp fd01::2 ping named service icmp
dropped tcp 10.1.0.2 80 default policy of eth0
dropped tcp fd01::2 80 default policy of eth0
passes tcp 10.2.0.2 80 default policy of eth1
dropped tcp 10.2.0.2 21 denied service ftp on eth1
TABLE
    expect "the connection from the subnet was logged" logHasCounted
}

switchProfile() {
    step "Another profile"
    run firewall-control store closed.json
    run firewall-control use closed
    showChanges
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 22 reserved service ssh
passes tcp fd01::2 22 reserved service ssh
dropped tcp 10.1.0.2 443 default policy of eth0
dropped tcp fd01::2 443 default policy of eth0
dropped icmp 10.1.0.2 ping default policy of eth0
dropped icmp fd01::2 ping default policy of eth0
dropped tcp 10.1.0.150 7777 default policy of eth0
dropped tcp 10.2.0.2 80 default policy of eth1
TABLE
    expect "the session of 10.1.0.150 goes on" sessionAnswers early "$RECOVERY"
    run firewall-control use office
    expectConnections <<<'passes tcp 10.1.0.2 443 back in the first profile'
}

changeAddress() {
    step "Another address in the profile"
    show sed -i 's/"10.1.0.2"]/"10.1.0.20"]/' office.json
    run firewall-control store office.json
    expectConnections <<<'dropped tcp 10.1.0.20 21 stored, not yet in force'
    run firewall-control reload
    showChanges
    expectConnections <<'TABLE'
passes tcp 10.1.0.20 21 the new address
dropped tcp 10.1.0.2 21 the old address
TABLE
}

switchOff() {
    step "The firewall switched off"
    run firewall-control disable
    expectAnswer "disabled, profile office" firewall-control status
    showRules
    expect "the firewall's chains are empty" chainsAreEmpty
    expect "INPUT and FORWARD accept" policiesAreOpen
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 80 no firewall
passes tcp fd01::2 80 no firewall
passes udp 10.1.0.2 123 no firewall
passes icmp fd01::2 ping no firewall
passes tcp 10.2.0.2 21 no firewall
TABLE
}
