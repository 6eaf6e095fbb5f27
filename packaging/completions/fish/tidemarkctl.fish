# Completion of tidemarkctl(1) for fish.

set -l commands status preview sweep undo activity pause resume folders watch
set -l folders_commands list add remove

complete -c tidemarkctl -f
complete -c tidemarkctl -l support -x -a '(__fish_complete_directories)' -d 'Use a folder for settings and journal'
complete -c tidemarkctl -n 'not __fish_seen_subcommand_from watch' -l json -d 'Print one JSON document'
complete -c tidemarkctl -s h -l help -d 'Print the manual in short'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'

complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a status -d 'Paused or not, and each watched folder'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a preview -d 'Show what a sweep would do'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a sweep -d 'Tidy the watched folders now'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a undo -d 'Take the last sweep back, and pause'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a activity -d 'Show what was done lately'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a pause -d 'Stop sweeping'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a resume -d 'Go on sweeping'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a folders -d 'Show, add or remove watched folders'
complete -c tidemarkctl -n "not __fish_seen_subcommand_from $commands" -a watch -d 'Keep the folders tidy until Ctrl-C'

complete -c tidemarkctl -n '__fish_seen_subcommand_from preview sweep undo' -l now -x -d 'Work as if it were that time'
complete -c tidemarkctl -n '__fish_seen_subcommand_from activity' -l limit -x -d 'Show at most so many files'
complete -c tidemarkctl -n '__fish_seen_subcommand_from watch' -l backend -x -a 'fanotify inotify' -d 'Watch by this interface only'

set -l in_folders "__fish_seen_subcommand_from folders; and not __fish_seen_subcommand_from $folders_commands"
complete -c tidemarkctl -n $in_folders -a list -d 'Show the watched folders with their rules'
complete -c tidemarkctl -n $in_folders -a add -d 'Watch folders'
complete -c tidemarkctl -n $in_folders -a remove -d 'Stop watching folders'
complete -c tidemarkctl -n '__fish_seen_subcommand_from folders; and __fish_seen_subcommand_from add remove' -a '(__fish_complete_directories)'
