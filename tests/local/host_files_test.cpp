// Files that the host names: what their names promise, and what counts as readable; written, copied
// and removed, but never inside the photo library.
#include "tests/local/support.h"

#include "platform/file_handle.h"

#include <sys/stat.h>
#include <unistd.h>

TEST(HostFiles, AreWrittenCopiedAndRemoved) {
    const ScratchHome home;
    std::optional<NSError> error;
    EXPECT_TRUE(createDirectoryAtPath(home.file("a/b/c")));
    EXPECT_TRUE(createDirectoryAtPath(home.file("a/b/c/")));
    const std::string path = home.file("a/b/c/file");
    EXPECT_FALSE(fileHandleForWritingAtPath(path)) << "it does not exist";
    ASSERT_TRUE(createFileAtPath(path));
    {
        const auto file = fileHandleForWritingAtPath(path);
        ASSERT_TRUE(file);
        writeData(*file, dataOf("one "));
        writeData(*file, dataOf("two"));
        closeFile(*file);
        closeFile(*file);
        EXPECT_THROW(writeData(*file, dataOf("x")), NSException);
    }
    EXPECT_EQ(readBytes(path), "one two");
    EXPECT_TRUE(createFileAtPath(path));
    EXPECT_EQ(readBytes(path), "") << "emptied";

    writeText(home.file("source"), std::string(3'000'000, 's'));
    EXPECT_TRUE(copyItemAtURL({home.file("source")}, {home.file("copy")}, error));
    EXPECT_EQ(readBytes(home.file("copy")), readBytes(home.file("source")));
    EXPECT_FALSE(copyItemAtURL({home.file("source")}, {home.file("copy")}, error));
    EXPECT_THAT(error->localizedDescription.value_or(""), HasSubstr("exists"));
    EXPECT_FALSE(copyItemAtURL({home.file("source")}, {home.file("no/where")}, error));

    EXPECT_TRUE(writeToURL(dataOf("new"), {home.file("copy")}, NSDataWritingAtomic, error));
    EXPECT_EQ(readBytes(home.file("copy")), "new");
    EXPECT_EQ(dataWithContentsOfFile(home.file("copy")), dataOf("new"));
    EXPECT_FALSE(writeToURL(dataOf("x"), {home.file("a")}, NSDataWritingAtomic, error));
    EXPECT_TRUE(fs::exists(home.file("a/b/c/file")));

    fs::create_symlink(home.file("source"), home.file("a/link"));
    EXPECT_TRUE(removeItemAtPath(home.file("a/")));
    EXPECT_FALSE(fs::exists(home.file("a")));
    EXPECT_TRUE(fs::exists(home.file("source"))) << "a link goes, its target stays";
    EXPECT_FALSE(removeItemAtPath(home.file("a")));
    for (const char* nowhere : {"", "/", ".", ".."})
        EXPECT_FALSE(removeItemAtPath(nowhere)) << nowhere;
}

TEST(HostFiles, LinksPipesAndEndlessHolesDoNoHarm) {
    const ScratchHome home;
    std::optional<NSError> error;
    writeText(home.file("target"), "kept");
    fs::create_directory(home.file("folder"));
    fs::create_symlink(home.file("target"), home.file("link"));
    fs::create_symlink(home.file("missing"), home.file("dangling"));
    mkfifo(home.file("pipe").c_str(), 0600);
    EXPECT_TRUE(isReadableFileAtPath(home.file("target")));
    EXPECT_TRUE(isReadableFileAtPath(home.file("link")));
    for (const char* name : {"folder", "pipe", "dangling", "missing"})
        EXPECT_FALSE(isReadableFileAtPath(home.file(name))) << name;
    EXPECT_FALSE(isReadableFileAtPath(""));
    EXPECT_FALSE(isReadableFileAtPath(std::string(5000, 'x')));
    for (const char* name : {"link", "dangling", "pipe"}) {
        EXPECT_FALSE(createFileAtPath(home.file(name))) << name;
        EXPECT_FALSE(fileHandleForWritingAtPath(home.file(name))) << name;
    }
    EXPECT_FALSE(dataWithContentsOfFile(home.file("pipe")));
    fs::resize_file(writeText(home.file("hole"), "x"), std::uintmax_t{1} << 40);
    EXPECT_FALSE(dataWithContentsOfFile(home.file("hole"))) << "a terabyte";
    EXPECT_FALSE(copyItemAtURL({home.file("pipe")}, {home.file("x")}, error));
    EXPECT_EQ(readBytes(home.file("target")), "kept");
    EXPECT_FALSE(fs::exists(home.file("missing")));
    fs::permissions(home.file("target"), fs::perms::none);
    inChild([&] { // by its own user, unless that is root
        EXPECT_FALSE(setuid(65534) == 0 && isReadableFileAtPath(home.file("target")));
    });
}

TEST(HostFiles, NeverLieInsideThePhotoLibrary) {
    const ScratchHome home;
    const auto identifier = *importFile(writePicture(home.file("a.jpg"))).identifier;
    const fs::path library = home.library();
    const fs::path original = originalOf(home, identifier);
    const std::string before = readBytes(original);
    fs::create_symlink(library, home.file("way in"));
    std::optional<NSError> error;
    for (const fs::path& place :
         {original, library, home.path() / "Pictures", home.path(), library / "library.db",
          home.file("way in/originals/x"), library / "new", library / "incoming/../library.db",
          home.file("x/../Pictures/Lumatrice Library/library.db")}) {
        EXPECT_FALSE(removeItemAtPath(place)) << place;
        EXPECT_FALSE(createFileAtPath(place)) << place;
        EXPECT_FALSE(fileHandleForWritingAtPath(place)) << place;
        EXPECT_FALSE(writeToURL(dataOf("x"), {place}, NSDataWritingAtomic, error)) << place;
        EXPECT_FALSE(copyItemAtURL({home.file("a.jpg")}, {place}, error)) << place;
    }
    EXPECT_FALSE(createDirectoryAtPath(library / "folder"));
    EXPECT_FALSE(createDirectoryAtPath(home.file("way in/a/b")));
    EXPECT_FALSE(createDirectoryAtPath(home.file("y/../Pictures/Lumatrice Library/z")));
    EXPECT_EQ(readBytes(original), before);
    EXPECT_EQ(listed().count(), 1u);
    // The link itself is no part of the library.
    EXPECT_TRUE(removeItemAtPath(home.file("way in")));
    EXPECT_TRUE(fs::exists(library / "library.db"));
}

TEST(ContentTypes, ComeFromTheEndingInAnyCase) {
    struct Case {
        const char* path;
        std::string type;
        bool isMovie = false;
    };
    for (const auto& [path, type, isMovie] :
         {Case{"/a/b.JpG", "public.jpeg"}, Case{"/a/b.mov.png", "public.png"},
          Case{"a.heic", "public.heic"}, Case{"/a.mov/b", "none"}, Case{"/a/.mov", "none"},
          Case{"/a/b.", "none"}, Case{"/a/b.xyz", "none"}, Case{"/a/b.MP4", "public.mpeg-4", true},
          Case{"a.avi", "public.avi", true}, Case{"a.mov", "com.apple.quicktime-movie", true}}) {
        const auto told = contentTypeOfFileAtURL({path});
        EXPECT_EQ(told ? told->identifier : "none", type) << path;
        EXPECT_EQ(told && conformsToType(*told, UTTypeMovie), isMovie) << path;
    }
}
