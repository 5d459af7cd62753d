complete -c fernhollow -f
complete -c fernhollow -s h -l help -d 'Show the options'
complete -c fernhollow -s v -l version -d 'Show the version'
complete -c fernhollow -l toggle -d 'Show or hide the main window'
complete -c fernhollow -l quit -d 'End the running instance'
complete -c fernhollow -l today -d 'Print the key presses of today'
complete -c fernhollow -l json -d 'With --today: print hours and applications'
complete -c fernhollow -l export -r -F -d 'Write all counts to a file'
