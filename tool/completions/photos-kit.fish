# fish completion for photos-kit; files are offered as well.
function __photos_kit_complete
    set -l words (commandline -opc)
    photos-kit complete $words[2..] (commandline -ct) 2>/dev/null
end
complete -c photos-kit -a '(__photos_kit_complete)'
