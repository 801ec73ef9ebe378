# bash completion for mediasplit

_mediasplit_inputs() {
    local suffixes='@(m3u8|m3u|mpd|mp4|m4i|m4s|m4v|m4a|m4p|m4r|cmfa|cmfv|mov|MOV|ts|trp|ec3|ac4)'
    local extended
    extended=$(shopt -p extglob)
    shopt -s extglob
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -d -- "$1"; compgen -f -X "!*.$suffixes" -- "$1")
    $extended
}

_mediasplit() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $before in
        -i) _mediasplit_inputs "$word" ;;
        -o)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            ;;
        -s | --decryption-keys | --track-id | --pid | --live-duration) ;;
        *)
            mapfile -t COMPREPLY < <(compgen -W \
                '-h -i -o -s -v --decryption-keys --track-id --pid --live-duration' -- "$word")
            ;;
    esac
}

complete -F _mediasplit mediasplit
