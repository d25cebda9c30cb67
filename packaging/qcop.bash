# Completion of qcop's arguments for bash.                                 -*- shell-script -*-

_qcop()
{
    local word=${COMP_WORDS[COMP_CWORD]} folder path
    COMPREPLY=()
    case $COMP_CWORD in
    1) mapfile -t COMPREPLY < <(compgen -W "listen registered send" -- "$word") ;;
    2)
        folder=${XDG_RUNTIME_DIR:+$XDG_RUNTIME_DIR/qcop}
        for path in "${folder:-${TMPDIR:-/tmp}/qcop-$EUID}"/"$word"*; do
            [[ ! -S $path ]] || COMPREPLY+=("${path##*/}")
        done
        ;;
    3)
        [[ ${COMP_WORDS[1]} == send ]] || return 0
        case ${COMP_WORDS[2]} in
        Quarn) mapfile -t COMPREPLY < <(compgen -W "show\(\)" -- "$word") ;;
        LyraPlayer) mapfile -t COMPREPLY < <(compgen -W "next prew show" -- "$word") ;;
        esac
        ;;
    esac
}

complete -F _qcop qcop
