# Trying an edited profile from the address of a client that it shuts out.
# shellcheck shell=bash

dropTrial() {
    step "A trial that is dropped"
    expect "10.1.0.2 opens a session" openSession own 10.1.0.2
    expect "10.1.0.20 opens a session" openSession other 10.1.0.20
    show sed -i 's/"10.1.0.2",/"10.1.0.3",/' office.json
    run firewall-control try office.json 10.1.0.2
    showChanges
    expectTrialInForce
    run firewall-control forget office
    showChanges
    expect "the session of 10.1.0.2 comes back" sessionAnswers own "$RECOVERY"
    expectConnections <<<'passes tcp 10.1.0.2 7777 the stored profile'
}

adoptTrial() {
    step "A trial that is adopted"
    run firewall-control try office.json 10.1.0.2
    expectTrialInForce
    run firewall-control adopt office
    showChanges
    expectConnections <<'TABLE'
dropped tcp 10.1.0.2 7777 what was tried stays
passes tcp 10.1.0.20 7777 what was tried stays
TABLE
    expect "the session of 10.1.0.2 goes on, as established ones do" sessionAnswers own "$RECOVERY"
}

expectTrialInForce() {
    expect "the session of 10.1.0.2 is cut off" sessionIsCut own
    expect "the session of 10.1.0.20 goes on" sessionAnswers other "$RECOVERY"
    expectConnections <<'TABLE'
dropped tcp 10.1.0.2 7777 the profile on trial
passes tcp 10.1.0.20 7777 the profile on trial
TABLE
}
