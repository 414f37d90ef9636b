# bash completion for photos-kit; where nothing of its own fits, files are offered.
_photos_kit() {
    mapfile -t COMPREPLY < <(photos-kit complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _photos_kit photos-kit
