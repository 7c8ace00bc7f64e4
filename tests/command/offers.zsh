# Prints what zsh offers at the end of each line of standard input. A shell that completes needs a
# terminal, so this one starts another shell on a pseudo-terminal.
#   zsh offers.zsh COMPLETION_DIRECTORY
directory=$(mktemp -d)
cat >$directory/lines
cat >$directory/.zshrc <<TEXT
fpath=(${(q)1} \$fpath)
directory=$directory
TEXT
cat >>$directory/.zshrc <<'TEXT'
autoload -Uz compinit && compinit -D -u
compadd() {
    # With these nothing is offered; the caller only wants to know what fits.
    if [[ ${@[1,(i)(-|--)]} != *-[a-zA-Z]#[OAD]\ * ]]; then
        local -a offered
        builtin compadd -A offered "$@"
        offers+=($offered)
    fi
    builtin compadd "$@"
}
collect() {
    offers=()
    _main_complete
    print -r -- ${(ou)offers} >>$directory/offers
}
zle -C collect complete-word collect
zle-line-init() {
    local line
    while IFS= read -r line; do
        BUFFER=$line CURSOR=$#line
        zle collect
    done <$directory/lines
    exit
}
zle -N zle-line-init
TEXT
zmodload zsh/zpty
export ZDOTDIR=$directory TERM=dumb
zpty shell zsh -d -i
while zpty -r shell; do :; done >/dev/null 2>&1
cat $directory/offers
rm -r $directory
