# Rules for countries: what happens to packets, and what the command says about it.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

ALLOWED='passes tcp 10.7.7.10 80 first address of XA
passes tcp 10.7.7.200 80 inside XA
passes tcp 10.8.8.10 80 last address of XA
dropped tcp 10.7.7.9 80 one before XA
dropped tcp 10.8.8.11 80 one after XA
passes tcp fd01:1fd::1000:10 80 first address of XA
passes tcp fd01:1fd::1800:1 80 inside XA
passes tcp fd01:1fd::2000:20 80 last address of XA
dropped tcp fd01:1fd::1000:f 80 one before XA
dropped tcp fd01:1fd::2000:21 80 one after XA
dropped tcp 10.7.7.200 443 another port
passes udp 10.8.8.10 53 a service from XA
dropped udp fd01:1fd::2000:21 53 a service from elsewhere'

DENIED='dropped tcp 10.7.7.10 80 first address of XA
dropped tcp 10.8.8.10 443 last address of XA
passes tcp 10.7.7.9 80 one before XA
passes tcp 10.8.8.11 443 one after XA
dropped tcp fd01:1fd::1000:10 80 first address of XA
dropped udp fd01:1fd::2000:20 53 last address of XA
passes tcp fd01:1fd::1000:f 80 one before XA
passes udp fd01:1fd::2000:21 53 one after XA'

# The command must foretell what happens to each packet of the table.
expectForetold() {
    local verdict protocol source port
    while read -r verdict protocol source port _; do
        case $verdict in
            passes) expectExplained 0 allow ;;
            dropped) expectExplained 1 deny ;;
        esac
    done
}

expectExplained() {
    expectOutput "$1" "\"verdict\":\"$2\"" zamofw --json explain --in eth0 --from "$source" \
        --proto "$protocol" --port "$port"
}

# expectPackets TABLE
expectPackets() {
    expectConnections <<<"$1"
    expectOutput 0 "the kernel holds the" zamofw verify
}

writeProfiles() {
    step "Countries with range files"
    expectOutput 0 '{"code":"XA","v4":1,"v6":1}' zamofw --json country list
    expectOutput 0 "10.7.7.10" zamofw country show XA
    expectOutput 0 "0.1.9.10" zamofw country show XB
    zamofw profile create inside
    expectOutput 0 "rule 1" zamofw rule add inside eth0 allow --from-country XA --proto tcp --port 80
    expectOutput 0 "rule 2" zamofw rule add inside eth0 allow --from-country XA --service dns
    zamofw policy inside eth0 deny
    zamofw profile create outside
    expectOutput 0 "rule 1" zamofw rule add outside eth0 deny --from-country XC,XA
    zamofw policy outside eth0 allow
    expectOutput 0 "this kernel takes all" zamofw rehearse inside
    expectOutput 0 "this kernel takes all" zamofw rehearse outside
}

# The library's own way, line by line.
switchOn() {
    step "Allowed from a country: enable"
    zamofw-chains
    zamofw profile use inside --no-reload
    expectOutput 0 "the firewall is enabled" zamofw enable
    expect "xt_geoip is loaded" isLoaded xt_geoip
    expectPackets "$ALLOWED"
    expectForetold <<<"$ALLOWED"
}

changeByTransaction() {
    step "Denied from a country: one transaction"
    expectOutput 0 'profile `outside` is in force' zamofw profile use outside
    expectPackets "$DENIED"
    expectForetold <<<"$DENIED"
    step "Allowed again: one transaction"
    expectOutput 0 'profile `inside` is in force' zamofw profile use inside
    expectPackets "$ALLOWED"
    expectOutput 0 'profile `inside` is in force' zamofw reload
    expectPackets "$ALLOWED"
}

changeLineByLine() {
    step "Denied from a country: line by line"
    zamofw profile use outside --no-reload
    expectOutput 0 'profile `outside` is in force' zamofw reload --sequential
    expectPackets "$DENIED"
    expect "the example program reloads" firewall-control use inside
    expectPackets "$ALLOWED"
}

# The command reads these ranges with their bytes reversed, and cannot foretell the packets.
networkOrder() {
    step "Ranges that are something else in the library's order"
    zamofw rule replace inside eth0 1 allow --from-country XB
    expectOutput 0 'profile `inside` is in force' zamofw reload
    expectConnections <<'TABLE'
passes tcp 10.9.1.5 80 inside XB
dropped tcp 10.9.1.200 80 outside XB
passes tcp fd01:2::1:5 80 inside XB
dropped tcp fd01:2::2:5 80 outside XB
TABLE
    expectOutput 0 "the kernel holds the" zamofw verify
    zamofw rule replace inside eth0 1 allow --from-country XA --proto tcp --port 80
    expectOutput 0 'profile `inside` is in force' zamofw reload
}

damage() {
    step "A country rule that is gone from the kernel"
    show iptables -D INPUT_FIREWALL "$(iptables -S INPUT_FIREWALL | sed 1d |
        grep -n geoip | head -n 1 | cut -d : -f 1)"
    expectOutput 1 "from rule 1 of eth0" zamofw verify
    expectConnections <<<'dropped tcp 10.7.7.10 80 its rule is gone'
    expectOutput 0 'profile `inside` is in force' zamofw reload
    expectConnections <<<'passes tcp 10.7.7.10 80 its rule is back'
}

# What the match does not take, the command finds before, or leaves the old rules in force.
refusals() {
    local code codes=XA
    step "What the match refuses"
    for code in X{E..S}; do
        writeRanges "$code" 10.5.5.10-10.5.5.10 fd01:1fd::30:300c-fd01:1fd::30:300c
        codes+=,$code
    done
    zamofw profile copy inside many
    expectOutput 2 "a rule takes 15" zamofw rule add many eth0 allow --from-country "$codes"
    iptables -N FOREIGN
    expect "iptables takes 15" iptables -A FOREIGN -m geoip --source-country "${codes%,*}"
    iptables -F FOREIGN
    iptables -X FOREIGN
    expectOutput 0 "is added" zamofw rule add many eth0 allow --from-country "${codes%,*}"
    expectOutput 0 "this kernel takes all" zamofw rehearse many
    head -c 12 /dev/zero >"$RANGES/XD.iv4"
    head -c 32 /dev/zero >"$RANGES/XD.iv6"
    zamofw rule add many eth0 allow --from-country XD
    listRules >before.rules
    expectOutput 1 "corrupted" zamofw rehearse many
    expectOutput 3 "corrupted" zamofw profile use many
    expect "the rules are the old ones, to the last" diff before.rules <(listRules)
    expectPackets "$ALLOWED"
}

switchOffCountries() {
    step "Switched off"
    expectOutput 0 "the firewall is disabled" zamofw disable
    expectConnections <<'TABLE'
passes tcp 10.7.7.9 80 no firewall
passes tcp fd01:1fd::2000:21 80 no firewall
TABLE
    expect "xt_geoip is gone" not isLoaded xt_geoip
}

runScenario() {
    makeCountries
    makeClients
    startServers
    writeProfiles
    switchOn
    changeByTransaction
    changeLineByLine
    networkOrder
    damage
    refusals
    switchOffCountries
}
