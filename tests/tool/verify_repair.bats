load support

some_pictures() {
    for i in 1 2 3 4; do picture "in/$i.jpg" $((i * 40)); done
    photos-kit import in
}

original_of() { # FILENAME
    local stored
    stored=$(catalogue "SELECT stored_as FROM asset WHERE filename = '$1'")
    echo "$HOME/Pictures/Lumatrice Library/originals/${stored:0:2}/$stored"
}

@test "a whole library is whole, also on a disk that takes no writes" {
    some_pictures
    run photos-kit verify
    [ "$status" -eq 0 ]
    says "The library is whole."
    unshare -rm true 2>/dev/null || skip "no mount namespaces here"
    run unshare -rm bash -c 'mount --bind "$HOME" "$HOME" && mount -o remount,bind,ro "$HOME" &&
        ! touch "$HOME/x" 2>/dev/null && "$PHOTOS_KIT" verify'
    [ "$status" -eq 0 ]
    says "The library is whole."
}

@test "faults are named, for people and programs, and repaired when that is wanted" {
    some_pictures
    cp "$(original_of 1.jpg)" saved
    rm "$(original_of 1.jpg)"
    cp saved "$HOME/Pictures/Lumatrice Library/originals/00/strayed"
    run photos-kit verify
    [ "$status" -eq 1 ]
    says "missing: originals/"
    says "unnamed: originals/00/strayed"
    [ "$(photos-kit verify --json | jq -r '.findings | length')" -eq 2 ]
    run photos-kit repair
    [ "$status" -eq 1 ]
    says "Nothing was changed."
    run photos-kit repair --apply
    [ "$status" -eq 0 ]
    cmp saved "$(original_of 1.jpg)"
    photos-kit verify
}

@test "a verification that was stopped goes on and forgets nothing" {
    some_pictures
    truncate -s 10 "$(original_of 1.jpg)"
    first=$(catalogue "SELECT n FROM asset WHERE filename = '1.jpg'")
    # As a run that was killed after the first file leaves it.
    photos-kit verify --json | jq --arg row "$first" \
        '{library, row: ($row | tonumber), findings}' >state
    run photos-kit verify --state state
    [ "$status" -eq 1 ]
    says "damaged: "
    [ ! -e state ]
    echo '{"row": "x"}' >state
    run photos-kit verify --state state
    [ "$status" -eq 1 ]
    says "no state"
    [ -e state ]
}

@test "a folder that is no library is said to be none, and left alone" {
    mkdir elsewhere
    run photos-kit verify --library elsewhere
    [ "$status" -eq 1 ]
    says "no catalogue"
    [ -z "$(ls -A elsewhere)" ]
    run photos-kit verify
    [ "$status" -eq 1 ]
    [ ! -e "$HOME/Pictures" ]
}

@test "the doctor names who has the library open" {
    picture a.jpg
    photos-kit import a.jpg
    [ "$(photos-kit doctor --json | jq -c .processes)" = '{}' ]
    mkfifo words
    sqlite3 "$HOME/Pictures/Lumatrice Library/library.db" <words >begun &
    exec 4>words
    echo "BEGIN IMMEDIATE; SELECT 1;" >&4
    until [ -s begun ]; do sleep 0.05; done
    photos-kit doctor --json | jq -e ".processes[\"$!\"] | .program == \"sqlite3\" and .writes"
    run photos-kit doctor
    says "sqlite3, writes"
    exec 4>&-
    wait
}
