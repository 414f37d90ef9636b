load support

three_pictures() {
    for name in a b c; do picture "in/$name.jpg" 40; done
    photos-kit import in
}

@test "what was deleted is listed, comes back by itself, and is whole" {
    three_pictures
    deleted=$(identifier_of b.jpg)
    put_into_trash b.jpg
    [ "$(listed | wc -l)" -eq 2 ]
    [ "$(photos-kit trash list --json | jq -r '.[].id')" = "$deleted" ]
    photos-kit trash restore "${deleted%%/*}"
    [ "$(identifier_of b.jpg)" = "$deleted" ]
    photos-kit export out "$deleted"
    cmp in/b.jpg out/b.jpg
    run photos-kit trash restore "$deleted"
    [ "$status" -eq 1 ]
    says "not in the trash"
}

@test "emptying asks, keeps what is new, and takes the files with it" {
    three_pictures
    put_into_trash a.jpg 31
    put_into_trash b.jpg 29
    run photos-kit trash empty </dev/null
    [ "$status" -eq 1 ]
    says "nothing was deleted"
    [ "$(photos-kit trash list --json | jq length)" -eq 2 ]

    run photos-kit trash empty --yes
    [ "$status" -eq 0 ]
    [ "$(photos-kit trash list --json | jq -r '.[].filename')" = b.jpg ]
    photos-kit trash empty --all --yes
    photos-kit status
    [ "$(find "$HOME/Pictures/Lumatrice Library/originals" -type f -not -name .photos-kit | wc -l)" -eq 1 ]
    photos-kit export out --all
    cmp in/c.jpg out/c.jpg
}

@test "what is unknown or has no edit is named, the exit code tells" {
    three_pictures
    run photos-kit revert "$(identifier_of a.jpg)"
    [ "$status" -eq 1 ]
    says "has no edit"
    run photos-kit trash restore nonsense
    [ "$status" -eq 1 ]
    run photos-kit export out 00000000-0000-4000-8000-000000000000
    [ "$status" -eq 1 ]
}
