# What the tests of photos-kit share: a home of their own for each, pictures, the program.
# PHOTOS_KIT is the program under test.

setup() {
    HOME=$BATS_TEST_TMPDIR/home
    export HOME
    LIBRARY="$HOME/Pictures/Lumatrice Library"
    mkdir "$HOME"
    cd "$BATS_TEST_TMPDIR" || return
}

photos-kit() { "$PHOTOS_KIT" "$@"; }

picture() { # PATH [TONE]
    mkdir -p "$(dirname "$1")"
    vips black "$1.v" 64 48
    vips linear "$1.v" "$1[Q=90]" 1 "${2:-90}" --uchar
    rm "$1.v"
}
pictures() { # NAME...: imported from in/, each of another tone
    local tone=0
    for name in "$@"; do picture "in/$name" $((tone += 40)); done
    photos-kit import in
}

# The identifiers that are listed, newest first, without their ending.
listed() { photos-kit list --count 0 --json | jq -r '.assets[].id | split("/")[0]'; }
identifier_of() { # FILENAME
    photos-kit list --count 0 --json | jq -r --arg name "$1" \
        '.assets[] | select(.filename == $name).id'
}

catalogue() { # SQL
    sqlite3 "$LIBRARY/library.db" "$1"
}
original_of() { # FILENAME
    local stored
    stored=$(catalogue "SELECT stored_as FROM asset WHERE filename = '$1'")
    echo "$LIBRARY/originals/${stored:0:2}/$stored"
}
# As an application's deletion does it, and the import a minute before.
put_into_trash() { # FILENAME [DAYS AGO]
    local then="(strftime('%s', 'now') - 86400 * ${2:-0}) * 1000"
    catalogue "UPDATE asset SET trashed_at = $then, added = $then - 60000 WHERE filename = '$1'"
}

says() { # TEXT, within what the last command printed
    [[ $output == *"$1"* ]] || { printf 'expected: %s\nprinted:  %s\n' "$1" "$output" >&2; return 1; }
}
refused() { # TEXT ARGUMENT...: photos-kit fails, and says so
    run photos-kit "${@:2}"
    [ "$status" -eq 1 ] || { echo "exit $status of: ${*:2}" >&2; return 1; }
    says "$1"
}
