load support

@test "what was deleted is listed, comes back by itself, and is whole" {
    pictures a.jpg b.jpg
    deleted=$(identifier_of b.jpg)
    put_into_trash b.jpg
    [ "$(listed | wc -l)" -eq 1 ]
    [ "$(photos-kit trash list --json | jq -r '.[].id')" = "$deleted" ]
    photos-kit trash restore "${deleted%%/*}"
    [ "$(identifier_of b.jpg)" = "$deleted" ]
    photos-kit export out "$deleted"
    cmp in/b.jpg out/b.jpg
    refused "not in the trash" trash restore "$deleted"
    refused "has no edit" revert "$deleted"
    refused "" export out 00000000-0000-4000-8000-000000000000
}

@test "emptying asks, keeps what is new, and takes the files with it" {
    pictures a.jpg b.jpg c.jpg
    put_into_trash a.jpg 31
    put_into_trash b.jpg 29
    run photos-kit trash empty </dev/null
    [ "$status" -eq 1 ]
    says "nothing was deleted"
    [ "$(photos-kit trash list --json | jq length)" -eq 2 ]

    photos-kit trash empty --yes
    [ "$(photos-kit trash list --json | jq -r '.[].filename')" = b.jpg ]
    photos-kit trash empty --all --yes
    [ "$(find "$LIBRARY/originals" -type f -not -name .photos-kit | wc -l)" -eq 1 ]
    cmp in/c.jpg "$(original_of c.jpg)"
}
