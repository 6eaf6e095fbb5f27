# Completion of tidemark(1) for fish.

complete -c tidemark -f
complete -c tidemark -l sweep -d 'Sweep now'
complete -c tidemark -l toggle-pause -d 'Pause sweeping, or resume it'
complete -c tidemark -l undo -d 'Undo the last sweep, and pause sweeping'
complete -c tidemark -l autostart -d 'Start without a window, as at login'
complete -c tidemark -s h -l help -d 'Print the manual in short'
complete -c tidemark -s v -l version -d 'Print the version'
