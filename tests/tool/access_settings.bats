load support

@test "access is shown, decided, and kept to" {
    picture in/a.jpg
    picture in/b.jpg
    photos-kit import in
    [ "$(photos-kit access --json | jq -r .access)" = full ]
    chosen=$(identifier_of a.jpg)
    photos-kit access limited "${chosen%%/*}"
    [ "$(listed)" = "${chosen%%/*}" ]
    photos-kit import in/b.jpg # joins what is chosen
    [ "$(listed | wc -l)" -eq 2 ]

    photos-kit access denied
    run photos-kit list
    [ "$status" -eq 1 ]
    says "denied"
    run photos-kit import in/a.jpg
    [ "$status" -eq 1 ]
    run photos-kit access limited 00000000-0000-4000-8000-000000000000
    [ "$status" -eq 1 ]
    [ "$(photos-kit access --json | jq -r .access)" = denied ]
    photos-kit access full
    [ "$(listed | wc -l)" -eq 3 ]
}

@test "the setting is kept, and no other is taken" {
    picture a.jpg
    photos-kit import a.jpg
    PATH=$PWD run "$PHOTOS_KIT" settings confirm-deletions ask # no dialog program there
    [ "$status" -eq 1 ]
    says "install"
    install -D /bin/true bin/zenity
    PATH=$PWD/bin:$PATH photos-kit settings confirm-deletions ask
    [ "$(photos-kit settings --json | jq .confirmDeletions)" = true ]
    run photos-kit settings confirm-deletions perhaps
    [ "$status" -eq 2 ]
    photos-kit settings confirm-deletions never
    [ "$(photos-kit settings --json | jq .confirmDeletions)" = false ]
    photos-kit settings derivatives-room 500M
    [ "$(photos-kit settings --json | jq .derivativesRoom)" = 524288000 ]
    run photos-kit settings derivatives-room -1
    [ "$status" -eq 2 ]
}

@test "wrong use does nothing and says so; looking makes no library" {
    for words in "" frobnicate "export" "export out" "import" "list --count many" "trash" \
        "list surplus" "export out --all --album 1" "list --count -1" "list --offset -1" \
        "list --count 123456789012345678901234" "trash empty --older-than 010x"; do
        # shellcheck disable=SC2086
        run photos-kit $words
        [ "$status" -eq 2 ] || { echo "exit $status of: $words"; false; }
    done
    photos-kit --help >/dev/null
    photos-kit --version
    photos-kit status --json | jq -e '.exists == false'
    for words in list albums "export out --all" "trash list" access settings; do
        # shellcheck disable=SC2086
        run photos-kit $words
        [ "$status" -eq 1 ] || { echo "exit $status of: $words"; false; }
        says "no photo library yet"
    done
    [ ! -e "$HOME/Pictures" ]
}

@test "without a home, or where a file stands in its place, it says why" {
    run env -u HOME "$PHOTOS_KIT" list
    [ "$status" -eq 1 ]
    says "HOME"
    mkdir "$HOME/Pictures"
    echo mine >"$HOME/Pictures/Lumatrice Library"
    run photos-kit list
    [ "$status" -eq 1 ]
    [ "$(cat "$HOME/Pictures/Lumatrice Library")" = mine ]
}

@test "an output that cannot be written is no success" {
    [ -e /dev/full ] || skip "no /dev/full"
    picture a.jpg
    photos-kit import a.jpg
    run bash -c '"$PHOTOS_KIT" list >/dev/full'
    [ "$status" -eq 1 ]
    says "could not be written"
}
