# Completion of the words and options of aurisk(1). Device names are not completed: to know them takes a scan.

_aurisk()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="scan info program volume mute transparency bredr battery find tone orientation monitor raw dsp eq noise direction global profile logs update sim codec"
    local words="--backend --adapter --world --new-world --both --json --log --timeout --help"
    local command= action= word i
    COMPREPLY=()

    case $previous in
    --backend)
        COMPREPLY=($(compgen -W "bluez sim" -- "$current"))
        return
        ;;
    --adapter)
        COMPREPLY=($(compgen -W "$(cd /sys/class/bluetooth 2>/dev/null && ls)" -X '*:*' -- "$current")) # no connections
        return
        ;;
    --world | --events | --loop-gain)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
        ;;
    --type)
        COMPREPLY=($(compgen -W "0 1 2" -- "$current"))
        return
        ;;
    --aid | --timeout | --duration | --seconds | --program | --db | --amp | --timestamp)
        return
        ;;
    esac

    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case ${COMP_WORDS[i - 1]} in
        --backend | --adapter | --world | --timeout) continue ;;
        esac
        [[ $word == -* ]] && continue
        if [[ $command ]]; then
            action=$word
            break
        fi
        command=$word
    done

    case $command in
    "") words="$commands $words --version" ;;
    scan) words+=" --duration --updates" ;;
    monitor) words+=" --duration" ;;
    find) words+=" --seconds" ;;
    volume | dsp | eq | noise | direction) words+=" --program" ;;
    bredr) words+=" --continuous" ;;
    logs) words+=" --events --loop-gain" ;;
    update) words+=" --type" ;;
    sim) words+=" --aid" ;;
    tone) words+=" --db --amp --seconds --timestamp" ;;
    esac
    case $command in
    program | volume | transparency | orientation | eq | noise | direction) [[ $previous == "$command" ]] && words+=" set" ;;
    tone) [[ $previous == "$command" ]] && words+=" stop supported base" ;;
    dsp | global | profile) [[ $previous == "$command" ]] && words+=" show set export import" ;;
    esac
    case $command in
    mute | bredr) words+=" on off" ;;
    orientation) words+=" left right" ;;
    noise) words+=" off weak medium strong" ;;
    direction) words+=" normal tv meeting face" ;;
    esac
    case "$command $action" in
    "dsp export" | "dsp import" | "global export" | "global import" | "profile export" | "profile import" | "update "*)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        [[ $current == -* ]] || return
        ;;
    esac
    COMPREPLY=($(compgen -W "$words" -- "$current"))
}

complete -F _aurisk aurisk
