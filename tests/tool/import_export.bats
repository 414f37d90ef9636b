load support

@test "a folder goes in, what is no picture is named, and all of it comes out the same" {
    picture in/a.jpg 10
    picture in/below/😀b.jpg 200
    picture in/.hidden/c.jpg 50
    echo words >in/note.txt
    run photos-kit import in
    [ "$status" -eq 1 ]
    says "note.txt: "
    says "Imported 2 files; 1 refused."

    echo words >$'in/100%\xff'
    [ "$(photos-kit import --json in/100* 2>/dev/null | jq -r '.refused[0].pathBytes')" = in/100%25%FF ]

    run photos-kit export out --all
    [ "$status" -eq 0 ]
    cmp in/a.jpg out/a.jpg
    cmp in/below/😀b.jpg out/😀b.jpg
    [ -n "$(identifier_of 😀b.jpg)" ]
    [ "$(ls -A out | wc -l)" -eq 2 ]
}

@test "nothing is printed past the edge of a terminal of one column" {
    picture in/a.jpg
    run script -qec 'stty cols 1; "$PHOTOS_KIT" import in' /dev/null
    says "Imported 1 file."
    [[ $output != *"Importing"* ]]
}

@test "an export overwrites nothing and numbers what is taken" {
    picture in/a.jpg
    photos-kit import in/a.jpg
    mkdir out
    echo mine >out/a.jpg
    photos-kit export out --all
    photos-kit export out "$(identifier_of a.jpg)"
    [ "$(cat out/a.jpg)" = mine ]
    cmp in/a.jpg "out/a (2).jpg"
    cmp in/a.jpg "out/a (3).jpg"
}

@test "a damaged file is told, not written, and holds up no other" {
    picture in/a.jpg 10
    picture in/b.jpg 20
    photos-kit import in
    stored=$(catalogue "SELECT stored_as FROM asset WHERE filename = 'a.jpg'")
    original="$HOME/Pictures/Lumatrice Library/originals/${stored:0:2}/$stored"
    chmod u+w "$original"
    printf x | dd of="$original" bs=1 seek=100 conv=notrunc status=none
    run photos-kit export out --all
    [ "$status" -eq 1 ]
    says "a.jpg"
    [ "$(ls -A out)" = b.jpg ]
}

@test "names that could harm are made harmless" {
    picture 'in/a.jpg'
    photos-kit import in
    catalogue "UPDATE asset SET filename = '../../escaped' || char(10) || '.jpg'"
    run photos-kit list
    [ "${#lines[@]}" -eq 2 ]
    photos-kit export out --all
    [ "$(find out -type f | wc -l)" -eq 1 ]
    [ ! -e ../escaped* ]
}

@test "the library's own folder is neither source nor destination" {
    picture a.jpg
    photos-kit import a.jpg
    run photos-kit import "$HOME/Pictures/Lumatrice Library/originals"
    [ "$status" -eq 1 ]
    run photos-kit export "$HOME/Pictures/Lumatrice Library/originals" --all
    [ "$status" -eq 1 ]
    photos-kit export out --all
}

@test "a killed import leaves whole assets only, and the next one goes on" {
    for i in 1 2 3 4 5 6 7 8; do picture "in/$i.jpg" $((i * 20)); done
    timeout -s KILL 0.1 "$PHOTOS_KIT" import in in in in in in || true
    photos-kit import in/1.jpg
    photos-kit export out --all
    for file in out/*; do
        name=$(basename "$file")
        cmp "$file" "in/${name:0:1}.jpg"
    done
    [ "$(find "$HOME/Pictures/Lumatrice Library/incoming" -type f | wc -l)" -eq 0 ]
}

@test "a full disk is said, and what is whole stays" {
    unshare -rm true 2>/dev/null || skip "no mount namespaces here"
    for i in 1 2 3; do picture "in/$i.jpg" $((i * 20)); done
    head -c 6000000 /dev/urandom >noise
    cat in/2.jpg noise >in/2big.jpg
    photos-kit import in
    mkdir small
    run unshare -rm bash -c 'mount -t tmpfs -o size=1m none small && cd small &&
        "$PHOTOS_KIT" export out --all; echo "exit $?"; ls out'
    says "exit 1"
    says "2big.jpg"
    [ "${lines[-3]}" = 1.jpg ] && [ "${lines[-2]}" = 2.jpg ] && [ "${lines[-1]}" = 3.jpg ]
}
