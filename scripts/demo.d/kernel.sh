# What the kernel would refuse, what it holds, and what a crash leaves behind.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

rehearse() {
    step "The command: a rehearsal, in a network that nobody else sees"
    listRules >before.rules
    expectOutput 1 "from rule 2 of eth0 (Guests)" zamofw rehearse ./guests.json
    expectOutput 0 "this kernel takes all" zamofw rehearse home
    expect "the rules are the old ones, to the last" diff before.rules <(listRules)
}

compareKernel() {
    step "The command: is the kernel what the profile says?"
    expectOutput 0 "the kernel holds the" zamofw verify
    show iptables -D INPUT_FIREWALL 3
    show ip6tables -I INPUT_FIREWALL 1 -p tcp --dport 9418 -j DROP
    expectOutput 1 "from rule 1 of eth0" zamofw verify
    expectOutput 1 "2 differences between the kernel and the profile" zamofw verify
    expectOutput 0 "kernel    differs" zamofw status
}

repairAfterCrash() {
    step "The command: after a reload that was killed half-way"
    show iptables -P INPUT DROP
    show iptables -F INPUT_FIREWALL
    show ip6tables -D INPUT -j INPUT_FIREWALL
    expectConnections <<<'dropped tcp 10.1.0.20 80 the door is closed'
    expectOutput 1 "[closed-policy]" zamofw doctor
    expectOutput 0 "0 left to mend" zamofw doctor --repair
    expectOutput 0 "nothing is wrong" zamofw doctor
    expectOutput 0 "the kernel holds the" zamofw verify
    expectConnections <<<'passes tcp 10.1.0.20 80 rule 2 again'
}
