# Completion of fernhollow's options for bash.
_fernhollow() {
    if [ "${COMP_WORDS[COMP_CWORD - 1]}" = --export ]; then
        mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
    else
        mapfile -t COMPREPLY < <(compgen -W '--export --help --json --pause --quit --resume --today --toggle --version' -- \
            "${COMP_WORDS[COMP_CWORD]}")
    fi
}
complete -F _fernhollow fernhollow
