load support

@test "a folder goes in, what is no picture is named, and all of it comes out the same" {
    picture in/a.jpg 10
    picture in/below/😀b.jpg 200
    picture in/.hidden/c.jpg 50
    echo words >in/note.txt
    refused "note.txt: " import in
    says "Imported 2 files; 1 refused."
    echo words >$'in/100%\xff'
    [ "$(photos-kit import --json in/100* 2>/dev/null | jq -r '.refused[0].pathBytes')" = in/100%25%FF ]

    photos-kit export out --all
    cmp in/a.jpg out/a.jpg
    cmp in/below/😀b.jpg out/😀b.jpg
    [ -n "$(identifier_of 😀b.jpg)" ]
    [ "$(ls -A out | wc -l)" -eq 2 ]
    # Neither source nor destination:
    refused "belongs to the photo library" import "$LIBRARY/originals"
    refused "" export "$LIBRARY/originals" --all
}

@test "nothing is printed past the edge of a terminal of one column" {
    picture in/a.jpg
    run script -qec 'stty cols 1; "$PHOTOS_KIT" import in' /dev/null
    says "Imported 1 file."
    [[ $output != *"Importing"* ]]
}

@test "an export overwrites nothing, numbers what is taken, and makes names harmless" {
    pictures a.jpg b.jpg
    long=$(printf 'x%.0s' {1..251})
    catalogue "UPDATE asset SET filename = '$long.jpg' WHERE filename = 'b.jpg'"
    mkdir out
    echo mine >out/a.jpg
    photos-kit export out --all
    photos-kit export out --all
    [ "$(cat out/a.jpg)" = mine ]
    cmp in/a.jpg "out/a (2).jpg"
    cmp in/a.jpg "out/a (3).jpg"
    cmp in/b.jpg "out/${long%????} (2).jpg"
    catalogue "UPDATE asset SET filename = '../../escaped' || char(10) || '.jpg'"
    run photos-kit list
    [ "${#lines[@]}" -eq 3 ]
    photos-kit export harmless --all
    [ "$(find harmless -type f | wc -l)" -eq 2 ]
    [ ! -e ../escaped* ]
}

@test "a full disk is said, and what is whole stays" {
    unshare -rm true 2>/dev/null || skip "no mount namespaces here"
    pictures 1.jpg 2.jpg
    head -c 6000000 /dev/urandom | cat in/1.jpg - >1big.jpg
    photos-kit import 1big.jpg
    mkdir small
    run unshare -rm bash -c 'mount -t tmpfs -o size=1m none small && cd small &&
        "$PHOTOS_KIT" export out --all; echo "exit $?"; ls out'
    says "exit 1"
    says "1big.jpg"
    [ "${lines[-2]}" = 1.jpg ] && [ "${lines[-1]}" = 2.jpg ]
}
