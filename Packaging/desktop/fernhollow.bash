# Completion of fernhollow's options for bash.
_fernhollow() {
    mapfile -t COMPREPLY < <(compgen -W '--help --quit --toggle --version' -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _fernhollow fernhollow
