# fish completion for pedvar
set -l commands import today day week month streaks pace rank compare calendar recap activities activity route export goal weight height profile settings sources doctor

complete -c pedvar -f
complete -c pedvar -l data -r -a '(__fish_complete_directories)' -d 'Folder of the data'
complete -c pedvar -l now -x -d 'Look from another moment'
complete -c pedvar -l json -d 'Answer with one JSON document'
complete -c pedvar -s h -l help -d 'Help'
complete -c pedvar -n "not __fish_seen_subcommand_from $commands" -l version -d 'Version'

function __pedvar_command -V commands
    complete -c pedvar -n "not __fish_seen_subcommand_from $commands" -a $argv[1] -d $argv[2]
end
__pedvar_command import 'Read a health export of a phone, or an activity from GPX'
__pedvar_command today 'Steps of today, goal and streak'
__pedvar_command day 'One day with its hours'
__pedvar_command week 'One week by day'
__pedvar_command month 'One month by day'
__pedvar_command streaks 'Days in a row on which the goal was met'
__pedvar_command pace 'Today so far against a usual day'
__pedvar_command rank 'Where the steps of a day stand at your age'
__pedvar_command compare 'A day against your own past'
__pedvar_command calendar 'A month as a page of the calendar'
__pedvar_command recap 'What a month was'
__pedvar_command activities 'All activities, the newest first'
__pedvar_command activity 'One activity with its route'
__pedvar_command route 'What GPX files hold'
__pedvar_command export 'Write the route of an activity as GPX'
__pedvar_command goal 'Show or set the daily goal'
__pedvar_command weight 'Show your weight over time, or note it'
__pedvar_command height 'Show your height, or note it'
__pedvar_command profile 'Show or change what Pedvar knows of you'
__pedvar_command settings 'Show or change the settings'
__pedvar_command sources 'Who counted the steps'
__pedvar_command doctor 'Check what is stored'
functions -e __pedvar_command

complete -c pedvar -n '__fish_seen_subcommand_from import route' -F
complete -c pedvar -n '__fish_seen_subcommand_from import' -l as -x -a 'walk run hike cycle' -d 'What a GPX file was'
complete -c pedvar -n '__fish_seen_subcommand_from activity export' -a last
complete -c pedvar -n '__fish_seen_subcommand_from activity' -l type -x -a 'walk run hike cycle' -d 'Make it another'
complete -c pedvar -n '__fish_seen_subcommand_from activity' -l delete -d 'Delete it'
complete -c pedvar -n '__fish_seen_subcommand_from activity' -l yes -d 'Without the question'
complete -c pedvar -n '__fish_seen_subcommand_from route' -l points -d 'With --json: every point'
complete -c pedvar -n '__fish_seen_subcommand_from export' -s o -l output -r -F -d 'Write to this file'
complete -c pedvar -n '__fish_seen_subcommand_from export' -l force -d 'Replace the file'
complete -c pedvar -n '__fish_seen_subcommand_from export' -l hide-home -x -d 'Cut what lies near to both ends'
complete -c pedvar -n '__fish_seen_subcommand_from day week' -a 'today yesterday'
complete -c pedvar -n '__fish_seen_subcommand_from settings' -a '(pedvar settings 2>/dev/null | string split -f 1 " ")'
complete -c pedvar -n '__fish_seen_subcommand_from sources' -l order -x -d 'Names of sources, most trusted first'
complete -c pedvar -n '__fish_seen_subcommand_from doctor' -l rebuild -d 'Make the stored totals anew'
complete -c pedvar -n '__fish_seen_subcommand_from rank' -l steps -x -d 'Of so many steps'
complete -c pedvar -n '__fish_seen_subcommand_from rank' -l age -x -d 'At another age'
complete -c pedvar -n '__fish_seen_subcommand_from compare' -l date -x -a 'today yesterday' -d 'Another day'
complete -c pedvar -n '__fish_seen_subcommand_from compare calendar' -a 'steps distance calories activeMinutes flights'
complete -c pedvar -n '__fish_seen_subcommand_from weight' -a 'kg lb'
complete -c pedvar -n '__fish_seen_subcommand_from height' -a 'cm in'
complete -c pedvar -n '__fish_seen_subcommand_from profile' -a 'age gender targetWeight dailyStepGoal'
