# From the help to command lines, each with a tab and what completion has to offer behind it.
function offer(line, words) {
    if (words != "" && !(line in offered)) {
        lines[++lineCount] = line
    }
    offered[line] = offered[line] " " words
}

/^  [a-z]/ {
    call = substr($0, 3)
    sub(/  .*/, "", call)
    gsub(/[][]/, "", call)
    count = split(call, parts, " ")
    line = "zamofw "
    options = ""
    takesWords = 0
    for (i = 1; i <= count; ++i) {
        if (parts[i] ~ /^-/) {
            options = options " " parts[i]
        } else if (parts[i] == "WORDS") {
            takesWords = 1
        } else if (options == "") {
            if (parts[i] ~ /^[a-z]+$/) {
                offer(line, parts[i])
            }
            # The first of several words; `|` would end the command.
            sub(/\|.*/, "", parts[i])
            line = line parts[i] " "
        }
    }
    offer(line "-", options)
    if (takesWords) {
        linesOfRules[++rules] = line
    }
}

/^  --/ {
    offer("zamofw -", $1)
}

# The words of a rule, in the lines below the first call that takes them.
/^      / && rules == 1 {
    while (match($0, /--[a-z-]+/)) {
        words = words " " substr($0, RSTART, RLENGTH)
        $0 = substr($0, RSTART + RLENGTH)
    }
}

END {
    for (i = 1; i <= rules; ++i) {
        offer(linesOfRules[i] "-", words)
    }
    for (i = 1; i <= lineCount; ++i) {
        print lines[i] "\t" offered[lines[i]]
    }
}
