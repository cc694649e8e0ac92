# Completion of brindle for fish.

set -l commands show set apply normalize export import strip undo journal scan check report listen time genres

complete -c brindle -f
complete -c brindle -s h -l help -d 'Print help and exit'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a show -d 'Show stream, tags and fields of each file'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a set -d 'Set values and save them'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a apply -d 'Set values from a table'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a normalize -d 'Rewrite tags so that all programs read the same'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a export -d 'Write scheduling fields for other playout systems'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a import -d 'Set scheduling fields from other playout systems'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a strip -d 'Remove tags'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a undo -d 'Take back what the last run changed'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a journal -d 'List the journals, or the changes in one'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a scan -d 'List files and folders with a summary'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a check -d 'Report whether files can go on air'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a report -d 'Write one HTML page about all files'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a listen -d 'Measure loudness and find cue points'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a time -d 'Print milliseconds as minutes and seconds'
complete -c brindle -n "not __fish_seen_subcommand_from $commands" -a genres -d 'Print the genre numbers and their names'

complete -c brindle -n '__fish_seen_subcommand_from show set apply normalize export import strip undo journal scan check report listen' -F

complete -c brindle -n '__fish_seen_subcommand_from show scan check listen' -l json -d 'One JSON object per file, on one line'

for option in title artist album year track genre comment composer publisher copyright url cue-in \
        intro outro sectone speed volume category category-level end-style no-fade agency \
        account-exec copy v1-title v1-artist v1-year v1-comment field \
        remove
    complete -c brindle -n '__fish_seen_subcommand_from set' -x -l $option
end
complete -c brindle -n '__fish_seen_subcommand_from set' -l opener -d 'The file is an opener'
complete -c brindle -n '__fish_seen_subcommand_from set' -l no-opener -d 'The file is not an opener'
complete -c brindle -n '__fish_seen_subcommand_from set' -l separate -d 'Do not set the ID3v1 record'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import' -l atomic -d 'Write a new file even if the tag fits'
complete -c brindle -n '__fish_seen_subcommand_from set' -l unicode -d 'Write text outside the code page as UTF-16'
complete -c brindle -n '__fish_seen_subcommand_from set' -l host-form -d 'Rewrite all frames, as hosts do'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip' -l force -d 'Even if frames or the stream would be lost'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip listen' -l dry-run -d 'Write nothing'
complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip' -l preserve -d 'Keep the modification time'

complete -c brindle -n '__fish_seen_subcommand_from set normalize export import strip listen' -l yes -d 'Change files in folders without asking'

complete -c brindle -n '__fish_seen_subcommand_from normalize' -x -l pictures -a 'keep shrink extract drop shrink,extract extract,drop' -d 'What to do with pictures'
complete -c brindle -n '__fish_seen_subcommand_from normalize' -l strip-foreign -d 'Remove APEv2 and Lyrics3 tags'
complete -c brindle -n '__fish_seen_subcommand_from normalize' -x -l repair-text -a 'utf-8 windows-1251 koi8-r iso-8859-5 windows-1253 iso-8859-7' -d 'Repair text in this encoding'

complete -c brindle -n '__fish_seen_subcommand_from export' -x -l to -a 'liquidsoap azuracast rivendell' -d 'Playout system'
complete -c brindle -n '__fish_seen_subcommand_from import' -x -l from -a 'liquidsoap azuracast rivendell' -d 'Playout system'

for command in set strip apply normalize export import undo listen
    complete -c brindle -n "__fish_seen_subcommand_from $command" -l no-journal -d 'Keep no journal'
    complete -c brindle -n "__fish_seen_subcommand_from $command" -r -l journal -d 'Keep the journal in this new file'
    complete -c brindle -n "__fish_seen_subcommand_from $command" -x -l journal-days -d 'Remove older journals'
    complete -c brindle -n "__fish_seen_subcommand_from $command" -x -l journal-megabytes -d 'Remove the oldest journals beyond that'
end
complete -c brindle -n '__fish_seen_subcommand_from undo' -l dry-run -d 'Write nothing'

complete -c brindle -n '__fish_seen_subcommand_from apply' -l dry-run -d 'Write nothing'
complete -c brindle -n '__fish_seen_subcommand_from apply' -l keep-going -d 'Write rows without errors even if others have errors'
complete -c brindle -n '__fish_seen_subcommand_from apply' -l unicode -d 'Write text outside the code page as UTF-16'
complete -c brindle -n '__fish_seen_subcommand_from apply' -l spreadsheet -d 'Remove the quotes that scan --spreadsheet puts'

complete -c brindle -n '__fish_seen_subcommand_from strip' -l v1 -d 'The ID3v1 record'
complete -c brindle -n '__fish_seen_subcommand_from strip' -l v2 -d 'The ID3v2 tag'
complete -c brindle -n '__fish_seen_subcommand_from strip' -l all -d 'Both'

complete -c brindle -n '__fish_seen_subcommand_from scan listen' -l csv -d 'Comma-separated values'
complete -c brindle -n '__fish_seen_subcommand_from scan' -x -l columns -d 'Only these columns'
complete -c brindle -n '__fish_seen_subcommand_from scan' -l hash -d 'Also print the SHA-256 of the audio'
complete -c brindle -n '__fish_seen_subcommand_from scan' -l spreadsheet -d 'Put a quote before cells that look like formulas'
complete -c brindle -n '__fish_seen_subcommand_from scan' -l utf8-names -d 'File names as UTF-8 with escapes'
complete -c brindle -n '__fish_seen_subcommand_from check' -l notes -d 'Also print notes'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l only -a 'warn bad' -d 'Only files with this verdict or a worse one'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l ignore -d 'Ignore a reason'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l fail-on -a 'warn bad never' -d 'Verdict from which the exit status is 1'
complete -c brindle -n '__fish_seen_subcommand_from check' -l listen -d 'Also decode the audio'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l silent-start -d 'Longest silence at the beginning, in seconds'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l silence-inside -d 'Longest silence inside, in seconds'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l silent-end -d 'Longest silence at the end, in seconds'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l too-loud -d 'Highest loudness'
complete -c brindle -n '__fish_seen_subcommand_from check' -x -l too-quiet -d 'Lowest loudness'
complete -c brindle -n '__fish_seen_subcommand_from show set normalize export import strip scan check report listen' -s 0 -l null -d 'Names on standard input end with a NUL'
complete -c brindle -n '__fish_seen_subcommand_from scan check report listen' -r -F -l cache -d 'Do not read unchanged files again'
complete -c brindle -n '__fish_seen_subcommand_from scan check listen' -l new -d 'Only new and changed files'
complete -c brindle -n '__fish_seen_subcommand_from scan check report listen' -x -l jobs -d 'Files in parallel'
complete -c brindle -n '__fish_seen_subcommand_from scan check report listen' -l quiet -d 'No progress bar and no summary'
complete -c brindle -n '__fish_seen_subcommand_from report' -r -F -s o -l output -d 'The page'

complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l set -a 'cue-in sectone loudness end-style' -d 'Set suggested values'
complete -c brindle -n '__fish_seen_subcommand_from listen import' -l overwrite -d 'Also replace values'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l end-style-texts -d 'Texts for the end styles'
complete -c brindle -n '__fish_seen_subcommand_from listen' -l quick -d 'First and last minute only'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l reference -d 'Loudness for gains'
complete -c brindle -n '__fish_seen_subcommand_from check listen' -x -l sound-range -d 'Level of sound below the loudness'
complete -c brindle -n '__fish_seen_subcommand_from listen' -x -l overlap-range -d 'Level below the loudness at which the next may start'

complete -c brindle -n '__fish_seen_subcommand_from time' -x -l style -a 'none fraction all' -d 'Layout'
