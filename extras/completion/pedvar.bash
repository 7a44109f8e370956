# bash completion for pedvar
_pedvar() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="import today day week month streaks awards water containers goal settings sources doctor"
    local command="" key="" i
    COMPREPLY=()
    case $previous in
    --data) compopt -o dirnames; return ;;
    --now) return ;;
    --category) mapfile -t COMPREPLY < <(compgen -W "steps distance streaks special" -- "$current"); return ;;
    --drink)
        mapfile -t COMPREPLY < <(compgen -W "water sparklingWater tea coffee juice milk softDrink sportsDrink" -- "$current")
        return
        ;;
    esac
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
        --data | --now) ((i++)) ;;
        -*) ;;
        *) if [[ -z $command ]]; then command=${COMP_WORDS[i]}; elif [[ -z $key ]]; then key=${COMP_WORDS[i]}; fi ;;
        esac
    done
    if [[ $current == -* ]]; then
        local options="--data --now --json --help"
        case $command in
        "") options+=" --version" ;;
        awards) options+=" --category" ;;
        water) options+=" --drink --container --undo --history" ;;
        containers) options+=" --drink --rename --default --remove" ;;
        sources) options+=" --order" ;;
        doctor) options+=" --rebuild" ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case $command in
    "") mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current") ;;
    import) compopt -o default ;;
    day | week) mapfile -t COMPREPLY < <(compgen -W "today yesterday" -- "$current") ;;
    settings)
        [[ -n $key ]] || mapfile -t COMPREPLY < <(compgen -W "$(pedvar settings 2>/dev/null | cut -d ' ' -f 1)" -- "$current")
        ;;
    esac
}
complete -F _pedvar pedvar
