# bash completion for pedvar
_pedvar() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="import today day week month streaks pace rank compare calendar recap record activities activity route export awards water containers goal weight height profile settings sources doctor watch update widget backup restore export-days"
    local command="" key="" i
    COMPREPLY=()
    case $previous in
    --data) compopt -o dirnames; return ;;
    --now | --hide-home | --steps | --age | --gpsd) return ;;
    --date) mapfile -t COMPREPLY < <(compgen -W "today yesterday" -- "$current"); return ;;
    --as | --type) mapfile -t COMPREPLY < <(compgen -W "walk run hike cycle" -- "$current"); return ;;
    -o | --output | --replay) compopt -o default; return ;;
    --speed) mapfile -t COMPREPLY < <(compgen -W "1 10 max" -- "$current"); return ;;
    --format) mapfile -t COMPREPLY < <(compgen -W "plain waybar i3blocks json" -- "$current"); return ;;
    --category) mapfile -t COMPREPLY < <(compgen -W "steps distance streaks special" -- "$current"); return ;;
    --drink)
        mapfile -t COMPREPLY < <(compgen -W "water sparklingWater tea coffee juice milk softDrink sportsDrink" -- "$current")
        return
        ;;
    esac
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
        --data | --now | --as | --type | -o | --output | --hide-home | --steps | --age | --date | --category | --drink | --gpsd | --replay | --speed | --format) ((i++)) ;;
        -*) ;;
        *) if [[ -z $command ]]; then command=${COMP_WORDS[i]}; elif [[ -z $key ]]; then key=${COMP_WORDS[i]}; fi ;;
        esac
    done
    if [[ $current == -* ]]; then
        local options="--data --now --json --help"
        case $command in
        "") options+=" --version" ;;
        import) options+=" --as --undo" ;;
        widget) options+=" --format --follow" ;;
        backup | export-days) options+=" --force" ;;
        record) options+=" --finish --gpsd --replay --speed --save" ;;
        activity) options+=" --type --delete --yes" ;;
        route) options+=" --points" ;;
        export) options+=" --output --force --hide-home" ;;
        rank) options+=" --steps --age" ;;
        compare) options+=" --date" ;;
        awards) options+=" --category" ;;
        water) options+=" --drink --container --undo --history" ;;
        containers) options+=" --drink --rename --default --remove" ;;
        sources) options+=" --order" ;;
        doctor) options+=" --rebuild" ;;
        update) options+=" --check --open --dismiss" ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case $command in
    "") mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current") ;;
    import | route | backup | restore | export-days) compopt -o default ;;
    record) [[ -n $key ]] || mapfile -t COMPREPLY < <(compgen -W "walk run hike cycle" -- "$current") ;;
    activity | export) [[ -n $key ]] || mapfile -t COMPREPLY < <(compgen -W "last" -- "$current") ;;
    day | week) mapfile -t COMPREPLY < <(compgen -W "today yesterday" -- "$current") ;;
    compare | calendar)
        mapfile -t COMPREPLY < <(compgen -W "steps distance calories activeMinutes flights" -- "$current")
        ;;
    weight) [[ -z $key ]] || mapfile -t COMPREPLY < <(compgen -W "kg lb" -- "$current") ;;
    height) [[ -z $key ]] || mapfile -t COMPREPLY < <(compgen -W "cm in" -- "$current") ;;
    profile)
        [[ -n $key ]] || mapfile -t COMPREPLY < <(compgen -W "age gender targetWeight dailyStepGoal" -- "$current")
        ;;
    settings)
        [[ -n $key ]] || mapfile -t COMPREPLY < <(compgen -W "$(pedvar settings 2>/dev/null | cut -d ' ' -f 1)" -- "$current")
        ;;
    esac
}
complete -F _pedvar pedvar
