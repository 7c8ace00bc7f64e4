# What a profile does to packets, said before it is in force.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

askAboutPackets() {
    step "The command: why is this blocked, and who reaches what"
    expectOutput 0 "allowed by rule 1 of eth0" \
        zamofw explain --in eth0 --from 10.1.0.20 --proto tcp --port 22
    expectOutput 1 "denied by the default policy of eth0" \
        zamofw explain --in eth0 --from 10.1.0.2 --proto tcp --port 22
    expectOutput 0 "tcp 22, 80, 8001-8002" zamofw matrix --in eth0
    expectConnections <<'TABLE'
passes tcp 10.1.0.20 22 as explained
dropped tcp 10.1.0.2 22 as explained
passes tcp 10.1.0.20 8002 as in the matrix
TABLE
}

compareMeaning() {
    step "The command: what a change will do"
    zamofw profile show home >before.json
    expectOutput 0 "- denied: tcp 8001-8002 from any" \
        zamofw rule replace home eth0 2 allow --proto tcp --port 80 --name Web
    expectOutput 1 "- denied: tcp 8001-8002 from any" zamofw diff ./before.json home --meaning
    expectConnections <<<'passes tcp 10.1.0.20 8002 stored, not yet in force'
    expectOutput 0 "[shadowed]" bash -c \
        'zamofw --quiet rule add home eth0 deny --from 10.1.0.7 --proto tcp --port 80 && zamofw check home'
    expectOutput 0 "after this, 10.1.0.9 cannot reach 22/tcp on eth0" \
        zamofw check home --client 10.1.0.9
    expectOutput 0 "is taken back" zamofw undo
    expectOutput 0 "+ allowed: tcp 8001-8002 from any" zamofw undo
}

assertIntents() {
    step "The command: what must hold, whatever the rules are"
    printf '%s\n' 'allow --service ssh --from 10.1.0.20 in eth0' 'deny --port 3306 in eth0' >intents
    expectOutput 0 "" zamofw assert intents
    show cp intents /usr/zamo/etc/firewall.d/intents
    expectOutput 0 "is removed" zamofw rule remove home eth0 1
    expectOutput 1 "does not hold: allow --service ssh" zamofw reload
    expectConnections <<<'passes tcp 10.1.0.20 22 the reload was refused'
    expectOutput 0 "is taken back" zamofw undo
    show rm /usr/zamo/etc/firewall.d/intents
}
