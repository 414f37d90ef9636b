// What a file's name promises, and what counts as readable.
#include "tests/local/support.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace platform;

TEST(ContentTypes, ComeFromTheEndingInAnyCase) {
    const auto typeOf = [](const char* path) {
        const auto type = contentTypeOfFileAtURL(fileURLWithPath(path));
        return type ? type->identifier : "none";
    };
    EXPECT_EQ(typeOf("/a/b.JpG"), "public.jpeg");
    EXPECT_EQ(typeOf("/a/b.mov.png"), "public.png");
    EXPECT_EQ(typeOf("/a/b.MP4"), "public.mpeg-4");
    EXPECT_EQ(typeOf("/a.mov/b"), "none");
    EXPECT_EQ(typeOf("/a/.mov"), "none");
    EXPECT_EQ(typeOf("/a/b."), "none");
    EXPECT_EQ(typeOf("/a/b.xyz"), "none");
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
    support::writeText(home.file("plain"), "x");
    support::writeText(home.file("closed"), "x");
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
    const int asNobody = support::inChild([&] {
        if (setuid(65534) == 0) {
            EXPECT_FALSE(isReadableFileAtPath(home.file("closed")));
        }
    });
    EXPECT_EQ(asNobody, 0);
}
