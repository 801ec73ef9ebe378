# bash completion for mediasplit-report

_mediasplit_report_files() {
    local extended
    extended=$(shopt -p extglob)
    shopt -s extglob
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -d -- "$2"; compgen -f -X "!*.@($1)" -- "$2")
    $extended
}

_mediasplit_report() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local choices=
    COMPREPLY=()
    case $before in
        -i)
            _mediasplit_report_files \
                'm3u8|m3u|mpd|mp4|m4i|m4s|m4v|m4a|m4p|m4r|cmfa|cmfv|mov|MOV|ts|trp|ec3|ac4' "$word"
            return
            ;;
        --report)
            _mediasplit_report_files 'json|html|htm|xml|txt' "$word"
            return
            ;;
        -o)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            return
            ;;
        --format) choices='json text html junit' ;;
        --fail-on) choices='error warning none' ;;
        --min-level) choices='info warning error' ;;
        -s | --decryption-keys | --track-id | --pid | --live-duration) return ;;
        *)
            choices='--report --format --fail-on --min-level --quiet --help --version
                -h -i -o -s -v --decryption-keys --track-id --pid --live-duration'
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}

complete -F _mediasplit_report mediasplit-report
