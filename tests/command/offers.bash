# Prints what bash offers at the end of each line of standard input.
#   bash offers.bash COMPLETION_DIRECTORY
. "$1/zamofw"
while IFS= read -r line; do
    read -ra COMP_WORDS <<<"$line"
    if [[ $line = *' ' ]]; then
        COMP_WORDS+=("")
    fi
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _zamofw </dev/null
    printf '%s\n' "${COMPREPLY[*]}"
done
