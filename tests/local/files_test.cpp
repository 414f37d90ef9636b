// What a file's name promises, and what counts as readable.
#include "tests/local/support.h"

#include <sys/stat.h>
#include <unistd.h>

TEST(ContentTypes, ComeFromTheEndingInAnyCase) {
    for (const auto& [path, type] : {std::pair{"/a/b.JpG", "public.jpeg"},
                                     {"/a/b.mov.png", "public.png"},
                                     {"/a/b.MP4", "public.mpeg-4"},
                                     {"/a.mov/b", "none"},
                                     {"/a/.mov", "none"},
                                     {"/a/b.", "none"},
                                     {"/a/b.xyz", "none"}}) {
        const auto told = contentTypeOfFileAtURL({path});
        EXPECT_EQ(told ? told->identifier : "none", type) << path;
    }
}

TEST(ContentTypes, OnlyVideosAreMovies) {
    for (const char* movie : {"a.mov", "a.mp4", "a.M4V", "a.mkv", "a.avi", "a.webm", "a.mts"})
        EXPECT_TRUE(conformsToType(*contentTypeOfFileAtURL({movie}), UTTypeMovie)) << movie;
    for (const char* picture : {"a.jpg", "a.heic", "a.gif", "a.dng"})
        EXPECT_FALSE(conformsToType(*contentTypeOfFileAtURL({picture}), UTTypeMovie)) << picture;
    EXPECT_TRUE(conformsToType(UTTypeMovie, UTTypeMovie));
}

TEST(ReadableFiles, AreRegularFilesThatThisUserMayRead) {
    const ScratchHome home;
    writeText(home.file("plain"), "x");
    writeText(home.file("closed"), "x");
    fs::permissions(home.file("closed"), fs::perms::none);
    fs::create_directory(home.file("folder"));
    mkfifo(home.file("pipe").c_str(), 0600);
    fs::create_symlink(home.file("plain"), home.file("link"));
    fs::create_symlink(home.file("gone"), home.file("broken"));
    EXPECT_TRUE(isReadableFileAtPath(home.file("plain")));
    EXPECT_TRUE(isReadableFileAtPath(home.file("link")));
    for (const char* name : {"folder", "pipe", "broken", "gone"})
        EXPECT_FALSE(isReadableFileAtPath(home.file(name))) << name;
    EXPECT_FALSE(isReadableFileAtPath(""));
    EXPECT_FALSE(isReadableFileAtPath(std::string(5000, 'x')));
    inChild([&] {
        if (setuid(65534) == 0) {
            EXPECT_FALSE(isReadableFileAtPath(home.file("closed")));
        }
    });
}
