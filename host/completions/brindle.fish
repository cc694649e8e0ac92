# Completion of brindle for fish.

set -l commands show set apply normalize export import strip undo journal scan check listen time genres

complete -c brindle -f
complete -c brindle -s h -l help -d 'Print help and exit'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a show -d 'Show what is known of each file'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a set -d 'Set values and save them'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a apply -d 'Set what a table says, a row a file'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a normalize -d 'Rewrite tags so that all read the same'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a export -d 'Write scheduling fields for other playout systems'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a import -d 'Set scheduling fields from other playout systems'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a strip -d 'Take tags off'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a undo -d 'Take back what the last run changed'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a journal -d 'List the journals, or what one holds'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a scan -d 'List the files of folders and sum them up'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a check -d 'Tell whether files can go on air'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a listen -d 'Measure loudness and find cue points'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a time -d 'Print milliseconds as minutes and seconds'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a genres -d 'Print the genre numbers and their names'

complete -c brindle -n '__fish_seen_subcommand_from show set apply normalize export import strip undo journal scan check listen' -F

complete -c brindle -n '__fish_seen_subcommand_from show scan check listen' -l json -d 'One JSON object a line and file'

for option in title artist album year track genre comment composer publisher copyright url cue-in \
        intro outro sectone speed volume category category-level end-style no-fade agency \
        account-exec copy v1-title v1-artist v1-year v1-comment field \
        remove
    complete -c brindle -n '__fish_seen_subcommand_from set' -x -l $option
end
complete -c brindle -n '__fish_seen_subcommand_from set' -l opener -d 'It is an opener'
complete -c brindle -n '__fish_seen_subcommand_from set' -l no-opener -d 'It is none'
complete -c brindle -n '__fish_seen_subcommand_from set' -l separate -d 'Leave the ID3v1 record alone'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import' -l atomic -d 'Write a new file also when the tag fits'
complete -c brindle -n '__fish_seen_subcommand_from set' -l unicode -d 'Write text outside the code page as UTF-16'
complete -c brindle -n '__fish_seen_subcommand_from set' -l host-form -d 'Write all frames anew, as hosts do'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip' -l force -d 'Also what would cost frames or the stream'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip listen' -l dry-run -d 'Touch nothing'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip' -l preserve -d 'Keep the modification time'

complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip listen' -l yes -d 'Change files in folders without asking'

complete -c brindle -n '__fish_seen_subcommand_from normalize' -x -l pictures -a 'keep drop' -d 'What becomes of pictures'

complete -c brindle -n '__fish_seen_subcommand_from export' -x -l to -a 'liquidsoap azuracast rivendell' -d 'Playout system'
complete -c brindle -n '__fish_seen_subcommand_from import' -x -l from -a 'liquidsoap azuracast rivendell' -d 'Playout system'

for command in set strip apply normalize export import undo listen
    complete -c brindle -n "__fish_seen_subcommand_from $command" -l no-journal -d 'Keep no journal'
    complete -c brindle -n "__fish_seen_subcommand_from $command" -r -l journal -d 'Keep the journal in this new file'
    complete -c brindle -n "__fish_seen_subcommand_from $command" -x -l journal-days -d 'Remove older journals'
    complete -c brindle -n "__fish_seen_subcommand_from $command" -x -l journal-megabytes -d 'Remove the oldest journals beyond that'
end
complete -c brindle -n '__fish_seen_subcommand_from undo' -l dry-run -d 'Touch nothing'

complete -c brindle -n '__fish_seen_subcommand_from apply' -l dry-run -d 'Touch nothing'
complete -c brindle -n '__fish_seen_subcommand_from apply' -l keep-going -d 'Write the good rows also when others have an error'
complete -c brindle -n '__fish_seen_subcommand_from apply' -l unicode -d 'Write text outside the code page as UTF-16'
complete -c brindle -n '__fish_seen_subcommand_from apply' -l spreadsheet -d 'Take off the quotes that scan --spreadsheet puts'

complete -c brindle -n '__fish_seen_subcommand_from strip' -l v1 -d 'The ID3v1 record'
complete -c brindle -n '__fish_seen_subcommand_from strip' -l v2 -d 'The ID3v2 tag'
complete -c brindle -n '__fish_seen_subcommand_from strip' -l all -d 'Both'

complete -c brindle -n '__fish_seen_subcommand_from scan listen' -l csv -d 'Comma-separated values'
complete -c brindle -n '__fish_seen_subcommand_from scan' -x -l columns -d 'Only these columns'
complete -c brindle -n '__fish_seen_subcommand_from scan' -l hash -d 'Also SHA-256 of the audio'
complete -c brindle -n '__fish_seen_subcommand_from scan' -l spreadsheet -d 'A quote before what looks like a formula'
complete -c brindle -n '__fish_seen_subcommand_from scan' -l utf8-names -d 'Names of files as UTF-8 with escapes'
complete -c brindle -n '__fish_seen_subcommand_from check' -l notes -d 'Print notes, too'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l only -a 'warn bad' -d 'Files of this verdict or a worse one'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l ignore -d 'Leave a reason out'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l fail-on -a 'warn bad never' -d 'From which verdict on the status is 1'
complete -c brindle -n '__fish_seen_subcommand_from check' -l listen -d 'Decode the audio, too'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l silent-start -d 'Longest silence at the beginning, in seconds'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l silence-inside -d 'Longest silence inside, in seconds'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l silent-end -d 'Longest silence at the end, in seconds'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l too-loud -d 'Greatest loudness'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l too-quiet -d 'Least loudness'
complete -c brindle -n '__fish_seen_subcommand_from show set normalize export import strip scan check listen' -s 0 -l null -d 'Names from standard input end with a NUL'
complete -c brindle -n '__fish_seen_subcommand_from scan check' -r -F -l cache -d 'Read no file again that is as it was'
complete -c brindle -n '__fish_seen_subcommand_from scan check' -l new -d 'Only files that no run has printed'
complete -c brindle -n '__fish_seen_subcommand_from scan check listen' -x -l jobs -d 'Files at once'
complete -c brindle -n '__fish_seen_subcommand_from scan check listen' -l quiet -d 'No progress bar and no summary'

complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l set -a 'cue-in sectone loudness end-style' -d 'Set what is suggested'
complete -c brindle -n '__fish_seen_subcommand_from listen import' -l overwrite -d 'Also where something is set'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l end-style-texts -d 'Words for how files end'
complete -c brindle -n '__fish_seen_subcommand_from listen' -l quick -d 'First and last minute only'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l reference -d 'Loudness for gains'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l sound-range -d 'LU below that are sound'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l overlap-range -d 'LU below where the next may begin'

complete -c brindle -n '__fish_seen_subcommand_from time' -x -l style -a 'none fraction all' -d 'Layout'
