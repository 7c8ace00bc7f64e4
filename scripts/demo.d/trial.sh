# Rules on trial, and the calls of the system's unit.
# shellcheck shell=bash disable=SC2016 # the backquotes stand in the command's messages

# through PORT COMMAND [ARGUMENT]...: as from a shell that sshd has opened for 10.1.0.20.
through() {
    SSH_CONNECTION="10.1.0.20 $1 10.1.0.1 22" setsid -w "${@:2}"
}

waitForEndOfTrial() {
    while [ -e /var/lib/zamofw/trial.json ]; do sleep 0.1; done
}

tryRules() {
    step "The command: rules on trial"
    expectOutput 0 "is added" zamofw rule add home eth0 allow --proto tcp --port 7777 --name Sessions
    expectOutput 0 'profile `home` is in force' zamofw reload
    expect "10.1.0.20 opens a session" openSession tried 10.1.0.20
    expectOutput 0 "is removed" zamofw rule remove home eth0 5
    listRules >before.rules
    expectOutput 0 '`home` is on trial for 600 seconds' through 40000 zamofw try home --seconds 600
    showChanges
    expect "the session of 10.1.0.20 is cut off" sessionIsCut tried
    expectConnections <<'TABLE'
dropped tcp 10.1.0.20 7777 the rules on trial
passes tcp 10.1.0.20 22 the rules on trial
TABLE
    expectOutput 1 "a trial of" zamofw try default
    expectOutput 1 "the connection that the trial was begun from" through 40000 zamofw confirm
    expectOutput 0 "trial     \`home\` for 10.1.0.20" zamofw status
    expectOutput 0 "is taken back" zamofw revert
    expect "the session of 10.1.0.20 comes back" sessionAnswers tried "$RECOVERY"
}

letTrialEnd() {
    step "The command: a trial that nobody confirms"
    listRules >before.rules
    expectOutput 0 '`home` is on trial for 1 second' through 40001 zamofw try home --seconds 1
    waitForEndOfTrial
    expect "the rules are the old ones, to the last" diff before.rules <(listRules)
    expectConnections <<<'passes tcp 10.1.0.20 7777 the rules from before'
}

confirmTrial() {
    step "The command: a trial that is confirmed"
    expectOutput 0 "is on trial" through 40002 zamofw try home
    expectOutput 0 "is in force, and stays" through 40003 zamofw confirm
    expectConnections <<<'dropped tcp 10.1.0.20 7777 confirmed'
    expect "the session of 10.1.0.20 goes on, as established ones do" sessionAnswers tried "$RECOVERY"
}

startAndStop() {
    step "The command: as the system starts and stops it"
    listRules >before.rules
    expectOutput 0 "the door is open" zamofw stop
    expectConnections <<<'passes tcp 10.1.0.2 443 stopped'
    show /usr/zamo/sbin/zamofw-chains remove
    expectOutput 0 "is started" zamofw start
    expect "the rules are those from before" diff before.rules <(listRules)
    expectConnections <<<'dropped tcp 10.1.0.2 443 started'
}
