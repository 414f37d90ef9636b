#include "tests/faults/prepared_libraries.h"

#include "platform/local/catalogue/catalogue_schema.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/library/library.h"
#include "tests/support/files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace faults {

namespace fs = std::filesystem;

namespace {

// For preparations only.
void require(bool done, const std::string& what) {
    if (done)
        return;
    std::fprintf(stderr, "a library could not be prepared: %s\n", what.c_str());
    std::abort();
}

// As 2021-03-04 05:06:07, so that the capture date does not change from run to run.
void setTime(const fs::path& path, long second) {
    const timespec time{1614834367 + second, 0};
    const timespec both[2] = {time, time};
    utimensat(AT_FDCWD, path.c_str(), both, 0);
}

std::string newName() {
    return local::uppercaseText(local::randomUuid()) + ".jpg";
}

// Puts a picture into the library past all that keeps it right; answers its path there.
std::string smuggle(const std::string& folder, const std::string& name) {
    const std::string path = folder + "/" + name.substr(0, 2) + "/" + name;
    fs::create_directories((here().library() / path).parent_path());
    fs::copy_file(pathInHome("import.jpg"), here().library() / path);
    return path;
}

} // namespace

Place here() {
    return {std::getenv("HOME")};
}

std::string pathInHome(const std::string& name) {
    return here().home / name;
}

void makeShelves(const fs::path& folder) {
    for (int shelf = 0; shelf < 256; ++shelf) {
        std::array<char, 4> name{};
        std::snprintf(name.data(), name.size(), "%02X", static_cast<unsigned>(shelf));
        std::error_code ignored;
        fs::create_directory(folder / name.data(), ignored);
    }
}

void writePictures(const Place& place) {
    fs::create_directories(place.home);
    unsigned number = 0;
    for (const char* name : {"import.jpg", "second.jpg", "plain.jpg", "favorite.jpg", "hidden.jpg",
                             "edited.jpg", "trashed.jpg", "rendered.jpg", "again.jpg"}) {
        local::Pixels pixels{64, 48, std::vector<std::uint8_t>(64 * 48 * 3)};
        ++number;
        for (std::size_t i = 0; i < pixels.rgb.size(); ++i)
            pixels.rgb[i] = static_cast<std::uint8_t>(i * 7 + i / 91 * number);
        const auto jpeg = local::encodeJpeg(pixels, 90);
        require(jpeg.has_value(), "a picture");
        support::writeText(place.home / name,
                           {reinterpret_cast<const char*>(jpeg->data()), jpeg->size()});
        setTime(place.home / name, number);
    }
}

Names prepareUsual() {
    Names names;
    const auto expect = [](const std::string& answer, const char* wanted) {
        require(answer == wanted, answer + " instead of " + wanted);
    };
    for (const char* name : {"plain", "favorite", "hidden", "edited", "trashed"})
        names[name] = HOST(ImportAssets, {pathInHome(std::string(name) + ".jpg")});
    names["Album"] = HOST(CreateAlbum, "Album", nullptr);
    names["Other"] = HOST(CreateAlbum, "Other", nullptr);
    names["Folder"] = HOST(CreateFolder, "Folder", nullptr);
    names["Inner"] = HOST(CreateAlbum, "Inner", names["Folder"]);
    for (const char* member : {"edited", "plain", "trashed"})
        expect(HOST(AddAssetsToAlbum, names["Album"], {names[member]}), "1");
    expect(HOST(AddAssetsToAlbum, names["Other"], {names["favorite"]}), "1");
    expect(HOST(AddAssetsToAlbum, names["Inner"], {names["favorite"]}), "1");
    expect(HOST(SetFavorite, {names["favorite"]}, JNI_TRUE), "1");
    expect(HOST(SetHidden, {names["hidden"]}, JNI_TRUE), "1");
    expect(HOST(ApplyEdit, names["edited"], pathInHome("rendered.jpg")), "0");
    expect(HOST(ApplyEdit, names["trashed"], pathInHome("again.jpg")), "0");
    expect(HOST(DeleteAssets, {names["trashed"]}), "1");
    return names;
}

Names prepareLeftBehind() {
    const Names names = prepareUsual();
    const fs::path incoming = here().library() / "incoming";
    const auto leave = [&](const std::string& name, const char* ending) {
        support::writeText(incoming / (name + ending), "");
    };
    for (const auto& [folder, ending] :
         {std::pair("originals", ".importing"), std::pair("renders", ".editing")}) {
        const std::string name = newName();
        smuggle(folder, name);
        leave(name, ending);
    }
    const std::string part = newName();
    fs::copy_file(pathInHome("import.jpg"), incoming / part);
    leave(part, ".importing");
    const fs::path edit = incoming / (local::uppercaseText(local::randomUuid()) + ".edit");
    fs::create_directory(edit);
    fs::copy_file(pathInHome("import.jpg"), edit / "rendered.jpg");
    const std::string discarded = smuggle("originals", newName());
    local::Library::open()
        ->connectionForChanges()
        ->statement("INSERT INTO discarded_file VALUES (?1)")
        .bind(1, discarded)
        .run();
    return names;
}

Names prepareDamaged() {
    Names names = prepareUsual();
    names["stray"] = smuggle("originals", newName());
    setTime(here().library() / names["stray"], 0); // a young one may belong to an import at work
    correctCount(5);
    return names;
}

void correctCount(int by) {
    local::Library::open()
        ->connectionForChanges()
        ->statement("UPDATE library SET listed = listed + ?1")
        .bind(1, std::int64_t{by})
        .run();
}

Names prepareWithoutCatalogue() {
    prepareUsual();
    for (const char* name : {"library.db", "library.db-wal", "library.db-shm"})
        fs::remove(here().library() / name);
    return {};
}

Names prepareOlder(std::size_t version) {
    const fs::path library = here().library();
    fs::create_directories(library);
    for (const char* folder : {"originals", "renders", "incoming", "derivatives"})
        fs::create_directory(library / folder);
    const local::UniqueFd folder(::open(library.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    local::CatalogueConnection connection(folder.get(), local::CatalogueConnection::Mode::readWrite,
                                          true);
    connection.execute("PRAGMA journal_mode=WAL");
    local::prepareSchema(connection, local::schemaSteps().first(version));
    // Their files are not there, which is part of the library's state.
    connection.execute(
        "WITH RECURSIVE s(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM s WHERE i < 2) "
        "INSERT INTO asset (uuid, created, media, width, height, hidden, filename, "
        "content_type, stored_as, hash, size, added) SELECT randomblob(16), "
        "1600000000000 + i, 1, 64, 48, i % 2, 'old.jpg', 'public.jpeg', "
        "hex(randomblob(16)) || '.jpg', zeroblob(16), 9, 1600000000000 FROM s;"
        "INSERT INTO favorite SELECT created, n FROM asset WHERE n < 3");
    return {};
}

} // namespace faults
