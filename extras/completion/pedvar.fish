# fish completion for pedvar
set -l commands import today day week month streaks awards water containers goal settings sources doctor

complete -c pedvar -f
complete -c pedvar -l data -r -a '(__fish_complete_directories)' -d 'Folder of the data'
complete -c pedvar -l now -x -d 'Look from another moment'
complete -c pedvar -l json -d 'Answer with one JSON document'
complete -c pedvar -s h -l help -d 'Help'
complete -c pedvar -n "not __fish_seen_subcommand_from $commands" -l version -d 'Version'

function __pedvar_command -V commands
    complete -c pedvar -n "not __fish_seen_subcommand_from $commands" -a $argv[1] -d $argv[2]
end
__pedvar_command import 'Read a health export of a phone'
__pedvar_command today 'Steps of today, goal and streak'
__pedvar_command day 'One day with its hours'
__pedvar_command week 'One week by day'
__pedvar_command month 'One month by day'
__pedvar_command streaks 'Days in a row on which the goal was met'
__pedvar_command awards 'Badges, and how far the next ones are'
__pedvar_command water 'Show or add what you drank today'
__pedvar_command containers 'Show or change what you drink from'
__pedvar_command goal 'Show or set the daily goal'
__pedvar_command settings 'Show or change the settings'
__pedvar_command sources 'Who counted the steps'
__pedvar_command doctor 'Check what is stored'
functions -e __pedvar_command

complete -c pedvar -n '__fish_seen_subcommand_from import' -F
complete -c pedvar -n '__fish_seen_subcommand_from day week' -a 'today yesterday'
complete -c pedvar -n '__fish_seen_subcommand_from settings' -a '(pedvar settings 2>/dev/null | string split -f 1 " ")'
complete -c pedvar -n '__fish_seen_subcommand_from sources' -l order -x -d 'Names of sources, most trusted first'
complete -c pedvar -n '__fish_seen_subcommand_from doctor' -l rebuild -d 'Make the stored totals anew'
complete -c pedvar -n '__fish_seen_subcommand_from awards' -l category -x -a 'steps distance streaks special' -d 'Only these'
complete -c pedvar -n '__fish_seen_subcommand_from water containers' -l drink -x -a 'water sparklingWater tea coffee juice milk softDrink sportsDrink' -d 'What it is'
complete -c pedvar -n '__fish_seen_subcommand_from water' -l container -x -d 'Drunk from it'
complete -c pedvar -n '__fish_seen_subcommand_from water' -l undo -d 'Take the last drink back'
complete -c pedvar -n '__fish_seen_subcommand_from water' -l history -d 'The last 30 days'
complete -c pedvar -n '__fish_seen_subcommand_from containers' -l rename -x -d 'Its new name'
complete -c pedvar -n '__fish_seen_subcommand_from containers' -l default -d 'Drink from it when none is named'
complete -c pedvar -n '__fish_seen_subcommand_from containers' -l remove -d 'Remove it'
