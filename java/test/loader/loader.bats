#!/usr/bin/env bats
# The loader's good and hard days, each in JVMs and a home of its own. Run by run-tests, which sets
# JAR, CLASSES (of the tests) and BUILD.
bats_require_minimum_version 1.5.0

setup_file() {
    [[ -z $(ls "/usr/lib/$(uname -m)-linux-gnu"/{,jni/,photos-kit/}libphotos_kit.so 2> /dev/null) ]] || skip 'an installed copy would be found first'
    local part=native/linux-$(uname -m)/photos-kit-imaging more=$BATS_FILE_TMPDIR/more
    mkdir -p "$more/${part%/*}"
    cp "$BUILD/libphotos_kit.so" "$BUILD/photos-kit-imaging" "$more/"
    echo >> "$more/photos-kit-imaging"
    scripts/package-jar --jar-only "$more" "$more/other"
    truncate -s 1G "$more/photos-kit-imaging" # takes a while to extract
    scripts/package-jar --jar-only "$more" "$more/slow"
    cp "$JAR" "$more/wrong.jar" && tac "$BUILD/photos-kit-imaging" > "$more/$part"
    jar --update --file "$more/wrong.jar" -C "$more" "$part" # no longer what the list says
}

setup() {
    home=$BATS_TEST_TMPDIR/home
    mkdir -p "$home"
    cache=$home/.cache/photos-kit
    elsewhere=-Djava.library.path=/nonexistent
    mine=(env -i "HOME=$home" "PATH=$PATH" LC_ALL=C.UTF-8)
    classes=$CLASSES/Load.class
    mkdir "$BATS_TEST_TMPDIR/classes" && cp "$classes" "$BATS_TEST_TMPDIR/classes/"
    more=$BATS_FILE_TMPDIR/more
    slow=$(ls "$more"/slow/*.jar) other=$(ls "$more"/other/*.jar)
}

java_of() { # JAR WORD...
    "${mine[@]}" java "$elsewhere" "${options[@]}" -cp "$1:$BATS_TEST_TMPDIR/classes" Load "${@:2}" 2>> "$BATS_TEST_TMPDIR/diagnostics"
}
loads() { run -0 java_of "$JAR" "$@"; [[ $output == *"loaded "*" assets"* ]]; }
refuses() { # WORD... that the reason holds
    run -3 java_of "$JAR"
    for word in "$@"; do [[ $output == *"refused: "*"$word"* ]] || { echo "no '$word' in: $output"; return 1; }; done
}
entry() { find "$cache" -mindepth 1 -maxdepth 1 -name '[0-9a-f]*' -type d; }
unfinished() { find "$cache" -mindepth 1 -maxdepth 1 -name '.unfinished-*'; }

@test "the parts in the jar are extracted once, for this user alone, and work" {
    umask 002
    loads
    [[ $output == *"loaded $(entry)/libphotos_kit.so"* ]]
    [[ $(stat -c %a "$cache" "$(entry)" "$(entry)"/*) == $'700\n700\n600\n700\n700\n664' ]]
    cmp "$BUILD/libphotos_kit.so" "$(entry)/libphotos_kit.so"
    before=$(stat -c '%i %Y' "$(entry)"/*k*)
    touch -d '10 days ago' "$(entry)/in-use"
    loads
    [[ $before == "$(stat -c '%i %Y' "$(entry)"/*k*)" ]]
    [[ -n $(find "$(entry)/in-use" -mtime -1) && -z $(unfinished) ]]

    vips black "$home/a.jpg" 60 40
    run -0 "${mine[@]}" java -p "$JAR" -cp "$CLASSES" --add-modules com.morrowfen.lumatrice.photos TenThings "$home" "$home/a.jpg"
    [[ $output == *' bytes of JPEG'*'Best of it holds 0, the library 0'* ]]
}

@test "a chosen place counts alone, then java.library.path, whose relative folders do not" {
    options=("-Dphotos.kit.path=$BUILD"); loads; [[ $output == *"loaded $BUILD/libphotos_kit.so"* ]]
    options=("-Dphotos.kit.path=$BUILD/libphotos_kit.so"); loads
    options=("-Dphotos.kit.path=$home"); refuses photos.kit.path "$home"
    echo junk > "$home/libphotos_kit.so"
    refuses photos.kit.path "$home/libphotos_kit.so cannot be loaded"
    [[ ! -e $cache ]]
    options=("-Djava.library.path=/nonexistent:$BUILD"); loads; [[ $output == *"loaded $BUILD/"* ]]
    cd "$BUILD"; options=(-Djava.library.path=:.:); loads; [[ $output == *"loaded $cache/"* ]]
    options=("-Djava.library.path=$home"); loads; [[ $output == *"loaded $cache/"* ]]
    rm -r "$cache"; ln -s "$home" "$cache"; refuses "$cache, is a link" "An installed copy could not be loaded either: $home"
}

@test "a damaged or changed copy is refused, in the cache and in the jar" {
    loads
    for file in libphotos_kit.so photos-kit-imaging; do
        cp -p "$(entry)/$file" "$home/kept"
        printf X | dd of="$(entry)/$file" bs=1 seek=1000 conv=notrunc status=none
        touch -r "$home/kept" "$(entry)/$file"; refuses "$(entry)/$file" 'Remove the folder'
        truncate -s 0 "$(entry)/$file"; refuses 'Remove the folder'
        rm "$(entry)/$file"; refuses 'Remove the folder'
        ln -s "$home/kept" "$(entry)/$file"; refuses 'Remove the folder'
        rm "$(entry)/$file"; cp -p "$home/kept" "$(entry)/$file"
    done
    loads
    # What is as it was proven needs no lock, and is safe from sweeping without one.
    rm "$cache/.lock"; mkdir "$cache/.lock"; touch -d '91 days ago' "$(entry)/in-use"
    loads; [[ -n $(find "$(entry)/in-use" -mtime -1) ]]
    : > "$(entry)/proven"; refuses 'cannot be extracted'
    rm -r "$cache"
    run -3 java_of "$more/wrong.jar"
    [[ $output == *'photos-kit-imaging'*'in the jar is missing or damaged'* && -z $(entry) && -z $(unfinished) ]]
}

@test "a folder that is a link, or that others own or can write to, is refused" {
    mkdir "$home/else"; ln -s "$home/else" "$home/.cache"; loads; rm "$home/.cache"
    mkdir -m 700 "$home/.cache" "$cache" "$home/other"
    rmdir "$cache"; ln -s "$home/other" "$cache"; refuses "$cache, is a link" XDG_CACHE_HOME photos.kit.path
    rm "$cache"; touch "$cache"; refuses 'no folder'; rm "$cache"
    mkdir "$cache"; for mode in 770 702; do chmod "$mode" "$cache"; refuses 'written to by others'; done
    chmod 755 "$cache"; loads
    chmod 777 "$home/.cache"; refuses 'written to by everybody'; chmod 700 "$home/.cache"
    chmod 770 "$(entry)"; refuses "$(entry), can be written to by others"; chmod 700 "$(entry)"
    name=$(entry); mv "$name" "$home/moved"; ln -s "$home/moved" "$name"; refuses "$name, is a link"
    rm "$name"; mv "$home/moved" "$name"; loads
    [[ $UID == 0 ]] || skip 'only root can make folders of other users'
    for folder in "$name" "$cache"; do chown 4711 "$folder"; refuses 'belongs to another user, 4711'; chown 0 "$folder"; done
    chmod 755 "$home" "$home/.cache" "$cache" "$BATS_RUN_TMPDIR" "$BATS_FILE_TMPDIR" "$BATS_TEST_TMPDIR"
    cp "$JAR" "$BATS_TEST_TMPDIR/" && JAR=$BATS_TEST_TMPDIR/${JAR##*/} # where that user can read it
    mine=(setpriv --reuid 4711 --clear-groups "${mine[@]}"); refuses 'belongs to root' 'cannot be written to'
}

@test "JVMs that extract at the same moment all end well" {
    for i in 1 2 3 4; do java_of "$JAR" > "$home/$i" & done
    for i in 1 2 3 4; do wait -n; done
    [[ $(cat "$home"/[1-4] | grep -c "loaded $(entry)/") == 4 ]]
    [[ $(entry | wc -l) == 1 && -z $(unfinished) ]]
}

@test "a kill in the middle leaves what the next start sweeps" {
    java_of "$slow" > "$home/out" & killed=$!
    until [[ -n $(find "$cache"/.unfinished-*/photos-kit-imaging 2> /dev/null) ]]; do kill -0 "$killed"; done
    kill -9 "$(pgrep -P "$killed" -x java || echo "$killed")"
    wait "$killed" || true
    [[ ! -s $home/out && -z $(entry) && -n $(unfinished) ]]
    loads
    [[ $(entry | wc -l) == 1 && -z $(unfinished) ]]
}

@test "what nobody used for 90 days goes, unless it is in use" {
    run -0 java_of "$other"
    first=$(entry)
    loads
    [[ -d $first ]]
    mkfifo "$home/pipe"
    java_of "$other" stay < "$home/pipe" > "$home/out" & exec 9> "$home/pipe"
    until grep assets "$home/out"; do kill -0 $!; done
    touch -d '91 days ago' "$first/in-use"; loads; [[ -d $first ]]
    exec 9>&-; wait $!
    touch -d '89 days ago' "$first/in-use"; loads; [[ -d $first ]]
    touch -d '91 days ago' "$first/in-use"; loads; [[ ! -d $first && $(entry | wc -l) == 1 && -z $(unfinished) ]]
}

@test "a process has one copy, whatever loads it" {
    run -3 java_of "$JAR" here "$BUILD/libphotos_kit.so"
    [[ $output == *'loaded the photo library already, from '* ]]
    for folder in "$(entry)" "$BUILD"; do
        run -4 java_of "$JAR" again "$folder/libphotos_kit.so"
        [[ $output == *PhotosLoadException*'loaded the photo library already, from '*'another class loader'* ]]
    done
    ln -s "$(entry)/libphotos_kit.so" "$home/link.so"; loads here "$home/link.so"
}

@test "without a home, on a foreign system, or without parts for it" {
    mine=(env -i "PATH=$PATH"); refuses XDG_CACHE_HOME HOME photos.kit.path
    mine=(env -i "PATH=$PATH" HOME=relative XDG_CACHE_HOME=relative); refuses 'are unset'
    mine=(env -i "PATH=$PATH" "XDG_CACHE_HOME=$home/xdg"); loads; [[ $output == *"loaded $home/xdg/photos-kit/"* ]]
    options=('-Dos.name=Windows 11'); refuses 'does not run on Windows 11'
    options=(-Dos.arch=riscv64); refuses 'riscv64'
    for foreign in aarch64 amd64; do [[ $foreign != "${parts_here:=$(uname -m | sed s/x86_64/amd64/)}" ]] || continue
        options=(-Dos.arch=$foreign); refuses 'no native parts for linux-' photos.kit.path; done
    mine=(env -i "PATH=$PATH" "HOME=$home/ü" LC_ALL=C); options=(-Dsun.jnu.encoding=ANSI_X3.4-1968); refuses 'UTF-8 locale' photos.kit.path
}

mounted() { # COMMAND: mounts something for this test alone; the home is $0
    unshare -m true 2> /dev/null || skip 'file systems cannot be mounted here'
    mine=(unshare -m bash -c "$1"' && exec "$@"' "$home" "${mine[@]}")
}

@test "an installed copy comes before the jar's" {
    [[ -d ${jni:=/usr/lib/$(uname -m)-linux-gnu/jni} ]] || skip 'this system has no folder for JNI libraries'
    mounted "mount --bind '$BUILD' '$jni'"
    loads; [[ $output == *"loaded $jni/libphotos_kit.so"* && ! -e $cache ]]
}

# shellcheck disable=SC2016
@test "a read-only home, after and before the parts were extracted" {
    loads
    mounted 'mount --bind "$0" "$0" && mount -o remount,ro,bind "$0"'; loads
    mounted 'mount -t tmpfs -o ro tmpfs "$0"'; refuses 'cannot be extracted' XDG_CACHE_HOME photos.kit.path
}
# shellcheck disable=SC2016
@test "a home mounted noexec" { mounted 'mount -t tmpfs -o noexec tmpfs "$0"'; refuses 'mounted noexec' XDG_CACHE_HOME photos.kit.path; }
# shellcheck disable=SC2016
@test "a full disk" { mounted 'mount -t tmpfs -o size=1m tmpfs "$0"'; refuses 'the disk is full' XDG_CACHE_HOME photos.kit.path; }

@test "a JVM that grants native access only where it is told to" {
    java --illegal-native-access=deny -version 2> /dev/null || skip 'this JVM is older than 24'
    options=(--illegal-native-access=deny); refuses '--enable-native-access=ALL-UNNAMED'
    options+=(--enable-native-access=ALL-UNNAMED); loads
}
