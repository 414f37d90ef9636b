load support

@test "access is shown, decided, and kept to" {
    pictures a.jpg b.jpg
    [ "$(photos-kit access --json | jq -r .access)" = full ]
    chosen=$(identifier_of a.jpg)
    photos-kit access limited "${chosen%%/*}"
    [ "$(listed)" = "${chosen%%/*}" ]
    photos-kit access denied
    refused denied list
    refused denied import in/a.jpg
    refused "" access limited 00000000-0000-4000-8000-000000000000
    [ "$(photos-kit access --json | jq -r .access)" = denied ]
    photos-kit access full
    [ "$(listed | wc -l)" -eq 2 ]
}

@test "the setting is kept, and no other is taken" {
    pictures a.jpg
    PATH=$PWD run "$PHOTOS_KIT" settings confirm-deletions ask # no dialog program there
    [ "$status" -eq 1 ]
    says "install"
    install -D /bin/true bin/zenity
    PATH=$PWD/bin:$PATH photos-kit settings confirm-deletions ask
    photos-kit settings --json | jq -e '.confirmDeletions == true'
    photos-kit settings confirm-deletions never
    photos-kit settings derivatives-room 500M
    photos-kit settings --json | jq -e '.confirmDeletions == false and .derivativesRoom == 524288000'
}

@test "wrong use does nothing and says so; looking makes no library" {
    for words in "" frobnicate "export" "export out" "import" "list --count many" "trash" \
        "list surplus" "export out --all --album 1" "list --count -1" "list --offset -1" \
        "list --count 123456789012345678901234" "trash empty --older-than 010x" \
        "settings confirm-deletions perhaps" "settings derivatives-room -1"; do
        # shellcheck disable=SC2086
        run photos-kit $words
        [ "$status" -eq 2 ] || { echo "exit $status of: $words"; false; }
    done
    photos-kit --help >/dev/null
    photos-kit --version
    photos-kit status --json | jq -e '.exists == false'
    for words in list albums "export out --all" "trash list" access settings; do
        # shellcheck disable=SC2086
        refused "no photo library yet" $words
    done
    mkdir elsewhere
    refused "no catalogue" verify --library elsewhere
    [ -z "$(ls -A elsewhere)" ]
    refused "" verify
    [ ! -e "$HOME/Pictures" ]
}

@test "without a home, or where a file stands in its place, it says why" {
    run env -u HOME "$PHOTOS_KIT" list
    [ "$status" -eq 1 ]
    says "HOME"
    mkdir "$HOME/Pictures"
    echo mine >"$LIBRARY"
    refused "" list
    [ "$(cat "$LIBRARY")" = mine ]
}

@test "an output that cannot be written is no success" {
    [ -e /dev/full ] || skip "no /dev/full"
    pictures a.jpg
    run bash -c '"$PHOTOS_KIT" list >/dev/full'
    [ "$status" -eq 1 ]
    says "could not be written"
}
