# Completion of brindle for bash. Needs nothing but bash itself.

_brindle_files() {
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(
        compgen -d -- "$word"
        shopt -s extglob nocaseglob nocasematch
        compgen -f -X "!*.mp[23]" -- "$word"
    )
}

_brindle() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} options=
    local journal="--no-journal --journal --journal-days --journal-megabytes"
    COMPREPLY=()

    if [[ $COMP_CWORD -eq 1 ]]; then
        mapfile -t COMPREPLY < <(
            compgen -W "show set apply normalize export import strip undo journal scan check
                report listen time genres -h --help --version" -- "$word")
        return
    fi
    case $command in
        show) options="--json -0 --null" ;;
        set)
            options="--title --artist --album --year --track --genre --comment --composer
                --publisher --copyright --url --cue-in --intro --outro --sectone --speed --volume
                --opener --no-opener --category --category-level --end-style --no-fade --agency
                --account-exec --copy --v1-title --v1-artist --v1-year --v1-comment --field --remove
                --separate --dry-run --preserve --force --atomic --unicode --host-form
                --yes -0 --null $journal"
            case $before in
                --opener | --no-opener | --separate | --dry-run | --preserve | --force | --atomic) ;;
                --unicode | --host-form | --yes | --null | --no-journal) ;;
                --journal) ;;
                --*) return ;; # a value, which nobody can guess
            esac
            ;;
        apply) options="--dry-run --keep-going --unicode --spreadsheet $journal" ;;
        normalize)
            options="--pictures --strip-foreign --repair-text --dry-run --preserve --force --atomic --yes -0 --null $journal"
            ;;
        export) options="--to --dry-run --preserve --force --atomic --yes -0 --null $journal" ;;
        import)
            options="--from --overwrite --dry-run --preserve --force --atomic --yes -0 --null $journal"
            ;;
        strip) options="--v1 --v2 --all --dry-run --preserve --force --yes -0 --null $journal" ;;
        undo) options="--dry-run $journal" ;;
        journal) ;;
        scan)
            options="--json --csv --columns --hash --spreadsheet --utf8-names --cache --new -0
                --null --jobs --quiet"
            ;;
        check)
            options="--json --notes --only --ignore --fail-on --listen --silent-start
                --silence-inside --silent-end --too-loud --too-quiet --sound-range --cache --new -0 --null --jobs
                --quiet"
            ;;
        report) options="-o --output --cache -0 --null --jobs --quiet" ;;
        listen)
            options="--json --csv --set --overwrite --dry-run --yes --end-style-texts --quick
                --reference --sound-range --overlap-range --cache --new -0 --null --jobs --quiet $journal"
            ;;
        time) options="--style" ;;
        genres) ;;
        *) return ;;
    esac
    case $command:$before in
        *:--journal-days | *:--journal-megabytes) return ;;
        *:--journal | *:--cache | report:-o | report:--output)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        scan:--columns) return ;;
        *:--jobs) return ;;
        check:--silent-start | check:--silence-inside | check:--silent-end) return ;;
        check:--too-loud | check:--too-quiet | check:--sound-range) return ;;
        listen:--set)
            mapfile -t COMPREPLY < <(
                compgen -W "cue-in sectone loudness end-style cue-in,sectone,loudness" -- "$word")
            return
            ;;
        listen:--end-style-texts) return ;;
        listen:--reference | listen:--sound-range | listen:--overlap-range) return ;;
        export:--to | import:--from)
            mapfile -t COMPREPLY < <(compgen -W "liquidsoap azuracast rivendell" -- "$word")
            return
            ;;
        normalize:--pictures)
            mapfile -t COMPREPLY < <(compgen -W "keep shrink extract drop shrink,extract extract,drop" -- "$word")
            return
            ;;
        normalize:--repair-text)
            mapfile -t COMPREPLY < <(compgen -W "utf-8 windows-1251 koi8-r iso-8859-5 windows-1253
                iso-8859-7" -- "$word")
            return
            ;;
        time:--style)
            mapfile -t COMPREPLY < <(compgen -W "none fraction all" -- "$word")
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options -h --help --version" -- "$word")
    elif [[ $command == apply || $command == journal || ($command == undo && $COMP_CWORD -eq 2) ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [[ $command != time && $command != genres ]]; then
        _brindle_files
    fi
}

complete -F _brindle brindle
