# The client, its network links, and its connections to the host.
# shellcheck shell=bash

TCP_PORTS=(21 22 23 25 80 443 873 7777 8001 8002 8003 8080 9418)
UDP_PORTS=(53 123)
PATIENCE=${PATIENCE:-1.5} # seconds of silence after which a connection counts as dropped
ANSWER=60 # seconds that an answer may take once there is a connection
RECOVERY=${RECOVERY:-10} # seconds within which a session that may go on does so

onClient() {
    ip netns exec client "$@"
}

# joinClient ADAPTER NETWORK HOST...
joinClient() {
    local adapter=$1 network=$2 host
    ip link add "$adapter" type veth peer name "$adapter" netns client
    ip addr add "$network.1/24" dev "$adapter"
    ip link set "$adapter" up
    for host in "${@:3}"; do
        ip -n client addr add "$network.$host/24" dev "$adapter"
    done
    ip -n client link set "$adapter" up
}

makeNetwork() {
    ip netns add client
    joinClient eth0 10.1.0 2 20 150
    joinClient eth1 10.2.0 2
    ip addr add fd01::1/64 dev eth0 nodad
    ip -n client addr add fd01::2/64 dev eth0 nodad
    ip -n client addr add fd01::3/64 dev eth0 nodad
}

# Every server sends back what it receives; the TCP servers also greet the client. A client that has
# nothing to send does not make them hang up before that.
startServers() {
    local port
    for port in "${TCP_PORTS[@]}"; do
        socat -t "$ANSWER" "TCP6-LISTEN:$port,ipv6-v6only=0,reuseaddr,fork" SYSTEM:'echo welcome; cat' &
    done 2>/dev/null
    for port in "${UDP_PORTS[@]}"; do
        socat -t "$PATIENCE" "UDP6-RECVFROM:$port,ipv6-v6only=0,fork" EXEC:cat &
    done 2>/dev/null
    waitForServers $((${#TCP_PORTS[@]} + ${#UDP_PORTS[@]}))
}

waitForServers() {
    local try
    for try in {1..100}; do
        [ "$(ss --no-header --listening --tcp --udp | wc -l)" -lt "$1" ] || return 0
        sleep 0.1
    done
    echo "not all of the $1 servers have started after $try attempts" >&2
    return 1
}

# Tries the connections of a table, all at once. Each line has "passes" or "dropped", the protocol,
# the client's address, the port and the reason.
expectConnections() {
    local rows jobs=() row verdict protocol source port reason result
    mapfile -t rows
    echo "  (connections tried from the client: ${#rows[@]})"
    for row in "${!rows[@]}"; do
        # shellcheck disable=SC2086 # the line's words
        outcome ${rows[row]} >"outcome.$row" &
        jobs+=($!)
    done
    wait "${jobs[@]}"
    for row in "${!rows[@]}"; do
        read -r verdict protocol source port reason <<<"${rows[row]}"
        result=$(<"outcome.$row")
        if [ "$result" = "$verdict" ]; then
            note ok "$protocol $source -> $port ($reason) $verdict"
        else
            note FAIL "$protocol $source -> $port ($reason) $verdict, but: $result"
        fi
    done
}

outcome() {
    local protocol=$2 answer
    answer=$(attempt "$protocol" "$3" "$4" 2>&1) || true
    case $protocol:$answer in
        *welcome* | icmp:*' 1 received'*) echo passes ;;
        # socat 1.8 adds the text of another error after "timed out".
        tcp:*'timed out'* | udp: | icmp:*' 0 received'*) echo dropped ;;
        *) echo "$answer" ;;
    esac
}

# attempt PROTOCOL SOURCE PORT
attempt() {
    local from=$2 to=${2%.*}.1
    if [[ $from = *:* ]]; then
        from="[$2]" to="[fd01::1]"
    fi
    case $1 in
        tcp)
            onClient socat -t "$ANSWER" - "TCP:$to:$3,bind=$from,connect-timeout=$PATIENCE" \
                </dev/null
            ;;
        udp) onClient socat -t "$PATIENCE" - "UDP:$to:$3,bind=$from" <<<welcome ;;
        icmp) onClient ping -q -c 1 -W "$PATIENCE" -I "${from//[][]/}" "${to//[][]/}" ;;
    esac
}

# A session is a connection that stays open. Its pipes are opened for reading and writing, because
# opening one end only would wait for the other.
# openSession NAME ADDRESS
openSession() {
    local greeting
    mkfifo "$1.in" "$1.out"
    onClient socat - "TCP:${2%.*}.1:7777,bind=$2" <>"$1.in" 1<>"$1.out" &
    read -r -t "$RECOVERY" greeting <>"$1.out"
    [ "$greeting" = welcome ]
}

# Lines sent while the session was cut off arrive first.
# sessionAnswers NAME SECONDS
sessionAnswers() {
    local text="line $RANDOM" answer
    echo "$text" 1<>"$1.in"
    while read -r -t "$2" answer; do
        [ "$answer" != "$text" ] || return 0
    done <>"$1.out"
    return 1
}

sessionIsCut() {
    ! sessionAnswers "$1" 2
}
