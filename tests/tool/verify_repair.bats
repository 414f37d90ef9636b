load support

@test "a whole library is whole, also on a disk that takes no writes" {
    pictures 1.jpg 2.jpg
    photos-kit verify
    unshare -rm true 2>/dev/null || skip "no mount namespaces here"
    run unshare -rm bash -c 'mount --bind "$HOME" "$HOME" && mount -o remount,bind,ro "$HOME" &&
        ! touch "$HOME/x" 2>/dev/null && "$PHOTOS_KIT" verify && ! "$PHOTOS_KIT" doctor'
    [ "$status" -eq 0 ]
    says "The library is whole."
    says "takes no writes"
}

@test "faults are named, hold up no other file, and are repaired when that is wanted" {
    pictures 1.jpg 2.jpg 3.jpg
    photos-kit backup saved
    cp "$(original_of 1.jpg)" "$LIBRARY/originals/00/strayed"
    rm "$(original_of 1.jpg)"
    truncate -s 10 "$(original_of 2.jpg)"
    refused "missing: originals/" verify
    says "unnamed: originals/00/strayed"
    [ "$(photos-kit verify --json | jq -r '.findings | length')" -eq 3 ]
    refused "2.jpg" export out --all
    [ "$(ls -A out)" = 3.jpg ]
    refused "Nothing was changed." repair --from saved
    photos-kit repair --from saved --apply
    cmp in/1.jpg "$(original_of 1.jpg)"
    photos-kit verify
}

@test "a verification that was stopped goes on and forgets nothing" {
    pictures 1.jpg 2.jpg 3.jpg
    truncate -s 10 "$(original_of 1.jpg)"
    first=$(catalogue "SELECT n FROM asset WHERE filename = '1.jpg'")
    # As a run that was killed after the first file leaves it.
    photos-kit verify --json | jq --arg row "$first" \
        '{library, row: ($row | tonumber), findings}' >state
    refused "damaged: " verify --state state
    [ ! -e state ]
    echo '{"row": "x"}' >state
    refused "no state" verify --state state
    [ -e state ]
}

@test "the doctor tries the sandbox, and names who has the library open" {
    pictures a.jpg
    photos-kit doctor --json | jq -e '.processes == {} and .imaging.sandbox and .disk.writable'
    mkfifo words
    sqlite3 "$LIBRARY/library.db" <words >begun &
    exec 4>words
    echo "BEGIN IMMEDIATE; SELECT 1;" >&4
    until [ -s begun ]; do sleep 0.05; done
    photos-kit doctor --json | jq -e ".processes[\"$!\"] | .program == \"sqlite3\" and .writes"
    run photos-kit doctor
    says "sqlite3, writes"
    exec 4>&-
    wait
}
