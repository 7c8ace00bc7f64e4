# shellcheck shell=bash disable=SC2154 # what measure sets
# For each manager: NAME_start makes it run without rules, NAME_rules writes the rules of a ruleList,
# NAME_reload prints the words of its reload.

zamofw_start() {
    inside zamofw zamofw-chains
}

zamofw_rules() {
    awk '{
        if ($1 == "any") {
            addresses = "\"ipGroup\": 5, \"ipType\": 2"
        } else {
            addresses = "\"ipGroup\": 0, \"ipType\": 0, \"ipDirect\": 1, \"ipList\": [\"" $1 "\"]"
        }
        print (NR > 1 ? "," : "{\"name\": \"bench\", \"adapterPolicyMap\": {\"eth0\": 1}, \"rules\": {\"eth0\": [")
        print "{\"enable\": true, \"policy\": 0, \"adapterDirect\": 1, \"table\": \"filter\"," addresses ","
        print "\"portGroup\": 1, \"protocol\": 1, \"portList\": [\"" $2 "\"]}"
    } END { print "]}}" }' >/tmp/bench.json
    inside zamofw zamofw --yes --quiet profile set bench /tmp/bench.json
    inside zamofw zamofw --yes --quiet profile use bench --no-reload >/dev/null
    inside zamofw zamofw --yes --quiet enable
}

zamofw_reload() {
    printf '%s\n' zamofw --quiet reload
}

ufw_start() {
    inside ufw ufw --force enable
    inside ufw ufw allow in on eth0 proto tcp from 10.9.0.0 to any port 1000
    inside ufw ufw allow in on eth0 proto tcp to any port 1003
    cp -r /etc/ufw /tmp/ufw
}

# Its own file, with the text of the two rules that ufw itself has written repeated.
ufw_rules() {
    local file list=/tmp/ufw/list
    cat >"$list"
    for file in user.rules user6.rules; do
        awk -v "six=$([ $file = user.rules ] || echo yes)" -v "list=$list" '
            function repeat(    rule, text) {
                while ((getline rule < list) > 0) {
                    split(rule, word, " ")
                    if (word[1] == "any") {
                        text = both
                        gsub(1003, word[2], text)
                    } else if (!six) {
                        text = one
                        gsub(/10\.9\.0\.0/, word[1], text)
                        gsub(1000, word[2], text)
                    } else {
                        continue
                    }
                    printf "%s\n", text
                }
            }
            /^### END RULES/ { inRules = 0; repeat() }
            inRules && / 1000 / { one = one $0 "\n" }
            inRules && / 1003 / { both = both $0 "\n" }
            !inRules { print }
            /^### RULES/ { inRules = 1; print "" }' "/tmp/ufw/$file" >"/etc/ufw/$file"
    done
}

ufw_reload() {
    printf '%s\n' ufw reload
}

firewalld_start() {
    local i
    [ "$variant" = nft ] ||
        sed -i 's/^FirewallBackend=.*/FirewallBackend=iptables/' /etc/firewalld/firewalld.conf
    mkdir -p /run/dbus
    # Not through a function, so that the numbers are those of the daemons.
    ip netns exec firewalld dbus-daemon --system --nofork --nopidfile &
    daemons+=($!)
    for ((i = 0; i < 100; ++i)); do
        [ ! -e /run/dbus/system_bus_socket ] || break
        sleep 0.1
    done
    ip netns exec firewalld firewalld --nofork --nopid &
    daemons+=($!)
    for ((i = 0; i < 300; ++i)); do
        ! inside firewalld firewall-cmd --state || return 0
        sleep 0.1
    done
    return 1
}

firewalld_rules() {
    {
        echo '<?xml version="1.0" encoding="utf-8"?><zone target="DROP"><short>bench</short>'
        echo '<interface name="eth0"/>'
        awk '{
            family = $1 == "any" ? "" : " family=\"ipv4\""
            source = $1 == "any" ? "" : "<source address=\"" $1 "\"/>"
            print "<rule" family ">" source "<port port=\"" $2 "\" protocol=\"tcp\"/><accept/></rule>"
        }'
        echo '</zone>'
    } >/etc/firewalld/zones/bench.xml
}

firewalld_reload() {
    printf '%s\n' firewall-cmd --reload
}

shorewall_start() {
    printf '%s\n' 'fw firewall' 'net ipv4' >/etc/shorewall/zones
    printf '%s\n' '?FORMAT 2' 'net eth0' >/etc/shorewall/interfaces
    # shellcheck disable=SC2016 # a variable of shorewall
    printf '%s\n' '$FW all ACCEPT' 'net all DROP' 'all all REJECT' >/etc/shorewall/policy
    printf '?SECTION NEW\n' >/etc/shorewall/rules
    inside shorewall shorewall start
}

shorewall_rules() {
    {
        echo '?SECTION NEW'
        awk '{ print "ACCEPT net" ($1 == "any" ? "" : ":" $1) " $FW tcp " $2 }'
    } >/etc/shorewall/rules
}

shorewall_reload() {
    printf '%s\n' shorewall reload
}

ferm_start() {
    true
}

ferm_rules() {
    {
        echo 'domain (ip ip6) chain INPUT {'
        echo '    interface lo ACCEPT; mod conntrack ctstate (ESTABLISHED RELATED) ACCEPT; }'
        awk '{
            head = $1 == "any" ? "domain (ip ip6) chain INPUT" : "domain ip chain INPUT saddr " $1
            print head " interface eth0 proto tcp dport " $2 " ACCEPT;"
        }'
        echo 'domain (ip ip6) chain INPUT interface eth0 DROP;'
    } >/tmp/bench.ferm
}

ferm_reload() {
    printf '%s\n' ferm /tmp/bench.ferm
}
