# What an administrator does with the command.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

writeRules() {
    step "The command: a first profile, with rules in words"
    expectOutput 0 "firewall  disabled" zamofw status
    expectOutput 0 "without rules" zamofw profile create home
    expectOutput 2 'did you mean `ssh`?' \
        zamofw rule add home eth0 allow --from 10.1.0.2 --service sssh
    expectOutput 0 "rule 1 of eth0" zamofw rule add home eth0 allow --from 10.1.0.2 --service ssh
    expectOutput 0 "rule 2 of eth0" \
        zamofw rule add home eth0 allow --proto tcp --port 80,8001-8002 --name Web
    expectOutput 0 "rule 3 of eth0" \
        zamofw rule add home eth0 allow --from fd01::2 --proto tcp --port 9418
    expectOutput 0 "rule 4 of eth0" zamofw rule add home eth0 allow --from 10.1.0.2 --service dns
    expectOutput 0 "[open-by-default]" zamofw check home
    expectOutput 0 "eth0 in home is deny" zamofw policy home eth0 deny
    expectOutput 0 '"findings":[]' zamofw --json check home
}

checkDocument() {
    step "The command: mistakes in a document, found before they do harm"
    zamofw profile show home >edited.json
    show sed -i 's/10.1.0.2"/10.1.0.256"/; s/adapterPolicyMap/adapterPolcyMap/' edited.json
    expectOutput 1 "[bad-address]" zamofw check ./edited.json
    expectOutput 1 'did you mean `adapterPolicyMap`?' zamofw --yes profile set home edited.json
}

applyRules() {
    step "The command: rules put into force"
    expectOutput 0 "-A INPUT_FIREWALL -i eth0 -s 10.1.0.2 -p tcp --dport 22 -j RETURN" \
        zamofw plan home
    expectOutput 0 'profile `home` is chosen' zamofw profile use home --no-reload
    listRules >before.rules
    expectOutput 0 "the firewall is enabled" zamofw enable
    showChanges
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 22 rule 1, a service from one address
dropped tcp 10.1.0.20 22 another address
passes tcp 10.1.0.20 80 rule 2, ports from everywhere
passes tcp fd01::3 8002 rule 2, end of a range of ports
dropped tcp fd01::3 8003 beyond that range
passes tcp fd01::2 9418 rule 3, one IPv6 address
dropped tcp fd01::3 9418 another IPv6 address
passes udp 10.1.0.2 53 rule 4
dropped udp 10.1.0.20 53 default of eth0
dropped udp fd01::2 53 default of eth0
passes tcp 10.2.0.2 443 no rule for eth1
TABLE
    expectOutput 0 "2 allow --proto tcp --port 80,8001-8002 --name Web" zamofw rule list
    zamofw rule list home eth0 --hits >hits
    show cat hits
    expect "every rule has counted packets" \
        test "$(grep -cE '^[1-4] [1-9][0-9]* [1-9][0-9]* allow ' hits)" = 4
}

# A connection whose first packet is dropped makes the client send it again.
repeatedPackets() {
    onClient nstat -asz TcpExtTCPSynRetrans | awk '/SynRetrans/ { print $2 }'
}

connectManyTimes() {
    for _ in {1..30}; do
        onClient socat -u OPEN:/dev/null TCP:10.1.0.1:80,bind=10.1.0.20 || return
    done
}

reloadUnderConnections() {
    local repeated client
    step "The command: a changed rule, and a reload that nobody notices"
    expectOutput 0 'after `zamofw reload`' \
        zamofw rule replace home eth0 1 allow --from 10.1.0.20 --service ssh
    expectConnections <<<'passes tcp 10.1.0.2 22 stored, not yet in force'
    repeated=$(repeatedPackets)
    connectManyTimes &
    client=$!
    expectOutput 0 'profile `home` is in force' zamofw reload
    expectOutput 0 'profile `home` is in force' zamofw reload
    expect "30 connections beside the reloads" wait "$client"
    expect "none of them had to knock twice" test "$(repeatedPackets)" = "$repeated"
    expectConnections <<'TABLE'
passes tcp 10.1.0.20 22 the new address
dropped tcp 10.1.0.2 22 the old address
TABLE
}

refuseLine() {
    step "The command: a line that the kernel refuses"
    expectOutput 0 "is made" zamofw profile set guests guests.json
    listRules >before.rules
    expectOutput 3 "from rule 2 of eth0 (Guests)" zamofw profile use guests
    expectOutput 3 "No chain/target/match by that name" zamofw --json profile use guests
    expect "the rules are the old ones, to the last" diff before.rules <(listRules)
    expectOutput 0 "profile   home" zamofw status
    expectConnections <<<'passes tcp 10.1.0.20 22 the old rules'
}

useAnotherProfile() {
    step "The command: another profile, and questions"
    expectOutput 1 $'eth0\tdeny' zamofw query port eth0 443
    expectOutput 0 $'eth0\tallow' zamofw query port eth0 80 --proto tcp
    expectOutput 0 'profile `default` is in force' zamofw profile use default
    expectConnections <<'TABLE'
passes tcp 10.1.0.2 443 no rule in this profile
passes tcp fd01::3 9418 no rule in this profile
TABLE
    expectOutput 0 'profile `home` is in force' zamofw profile use home
}

takeBack() {
    step "The command: a backup, and changes that are taken back"
    expectOutput 0 "is written" zamofw export backup.json
    expectOutput 0 "is deleted" zamofw --yes profile delete guests
    expectOutput 0 "is removed" zamofw rule remove home eth0 2
    expectOutput 0 'profile `home` is in force' zamofw reload
    expectConnections <<<'dropped tcp 10.1.0.20 80 its rule was removed'
    expectOutput 1 $'added\tguests' zamofw import backup.json --plan
    expectOutput 1 "say --yes" zamofw import backup.json
    expectOutput 0 "1 replaced" zamofw --yes import backup.json
    expectConnections <<<'passes tcp 10.1.0.20 80 imported, and in force at once'
    expectOutput 0 "is taken back" zamofw undo
    expectConnections <<<'dropped tcp 10.1.0.20 80 the import was taken back'
    expectOutput 0 "is taken back" zamofw undo
    expectConnections <<<'passes tcp 10.1.0.20 80 the removal was taken back'
    expectOutput 0 "zamofw undo" zamofw log -n 3
}

switchOffWithCommand() {
    step "The command: switched off"
    expectOutput 0 "the firewall is disabled" zamofw disable
    expect "the firewall's chains are empty" chainsAreEmpty
    expect "INPUT and FORWARD accept" policiesAreOpen
    expectConnections <<<'passes tcp 10.1.0.2 443 no firewall'
    expectOutput 0 'profile `default` is chosen' zamofw profile use default --no-reload
}
