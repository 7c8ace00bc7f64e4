# One page about the firewall.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

writeReport() {
    step "The command: a report to read and to print"
    expectOutput 0 'the report is written to `firewall.html`' zamofw report firewall.html
    show grep -o '<strong>[^/]*</\(bdi></\)\?strong>' firewall.html
    expect "its owner alone can read it" test "$(stat -c %a firewall.html)" = 600
    expect "it shows the rules in force" grep -qF '<bdi>tcp 80, 8001-8002</bdi>' firewall.html
    expect "it loads nothing" test "$(grep -cE 'https?:|src=|<script|url\(' firewall.html)" = 0
    ln -s firewall.html link.html
    expectOutput 3 "it is a symbolic link" zamofw report link.html
    expectOutput 3 'there is no directory `nowhere`' zamofw report nowhere/firewall.html
}
