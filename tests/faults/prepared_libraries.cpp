#include "tests/faults/methods.h"

#include "platform/local/catalogue/catalogue_schema.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/library/library.h"
#include "tests/support/files.h"

#include <fcntl.h>

#include <chrono>
#include <stdexcept>

namespace faults {

namespace {

// Puts a picture into the library past all that keeps it right.
void smuggle(const fs::path& path) {
    fs::create_directories((library() / path).parent_path());
    fs::copy_file(picture("import"), library() / path);
}

// A name as those of stored files, beginning with these two digits.
std::string nameOf(const std::string& shelf) {
    return shelf + "000000-0000-4000-8000-000000000000";
}

} // namespace

std::string id(const std::string& name) {
    std::string identifier = support::readBytes(besideHome("id of " + name));
    if (identifier.empty() || identifier == "(null)")
        throw std::logic_error("a prepared library lacks " + name);
    return identifier;
}

void keepId(const std::string& name, const std::string& identifier) {
    support::writeText(besideHome("id of " + name), identifier);
}

std::string picture(const std::string& name) {
    return besideHome(name + ".jpg");
}

void writePictures() {
    unsigned number = 0;
    for (const char* name : {"import", "second", "plain", "favorite", "hidden", "edited", "trashed",
                             "rendered", "again"}) {
        ++number;
        local::Pixels pixels{64, 48, std::vector<std::uint8_t>(64 * 48 * 3)};
        for (std::size_t i = 0; i < pixels.rgb.size(); ++i)
            pixels.rgb[i] = static_cast<std::uint8_t>(i * 7 + i / 91 * number);
        const auto jpeg = local::encodeJpeg(pixels, 90).value();
        support::writeText(picture(name), std::string(jpeg.begin(), jpeg.end()));
        // In 2021, so that a capture date does not change from run to run.
        const std::chrono::sys_seconds taken(std::chrono::seconds(1614834367 + number));
        fs::last_write_time(picture(name), std::chrono::file_clock::from_sys(taken));
    }
}

void makeShelves() {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char first : digits) {
        for (const char second : digits)
            fs::create_directory(library() / "renders" / std::string{first, second});
    }
}

void prepareNew() {
    for (const char* name : {"plain", "favorite", "hidden", "edited", "trashed"})
        keepId(name, HOST(ImportAssets, {picture(name)}));
    keepId("Album", HOST(CreateAlbum, "Album", nullptr));
    keepId("Folder", HOST(CreateFolder, "Folder", nullptr));
    keepId("Inner", HOST(CreateAlbum, "Inner", id("Folder")));
    std::string answers;
    for (const std::string& answer :
         {HOST(AddAssetsToAlbum, id("Album"), {id("edited"), id("plain"), id("trashed")}),
          HOST(AddAssetsToAlbum, id("Inner"), {id("favorite")}),
          HOST(SetFavorite, {id("favorite")}, JNI_TRUE), HOST(SetHidden, {id("hidden")}, JNI_TRUE),
          HOST(ApplyEdit, id("edited"), picture("rendered")),
          HOST(ApplyEdit, id("trashed"), picture("again")), HOST(DeleteAssets, {id("trashed")})})
        answers += answer;
    if (answers != "3111001")
        throw std::logic_error("a library could not be prepared: " + answers);
}

void prepareUsual() {
    prepareNew();
    for (const auto& shelf : fs::directory_iterator(library() / "originals")) {
        if (shelf.is_directory() && fs::is_empty(shelf))
            fs::remove(shelf);
    }
}

void prepareLeftBehind() {
    prepareUsual();
    smuggle("originals/AA/" + nameOf("AA") + ".jpg");
    smuggle("renders/BB/" + nameOf("BB") + ".jpg");
    smuggle("incoming/" + nameOf("CC") + ".jpg");
    smuggle("incoming/" + nameOf("DD") + ".edit/rendered.jpg");
    for (const std::string& lock : {nameOf("AA") + ".jpg.importing", nameOf("BB") + ".jpg.editing",
                                    nameOf("CC") + ".jpg.importing"})
        support::writeText(library() / "incoming" / lock, "");
    smuggle(stray());
    changeRows("INSERT INTO discarded_file VALUES ('" + stray() + "')");
}

std::string stray() {
    return "originals/EE/" + nameOf("EE") + ".jpg";
}

void prepareDamaged() {
    prepareUsual();
    smuggle(stray());
    changeRows("UPDATE library SET listed = listed + 5");
}

void changeRows(const std::string& sql) {
    local::Library::open()->connectionForChanges()->execute(sql.c_str());
}

void prepareWithoutCatalogue() {
    prepareUsual();
    for (const char* name : {"library.db", "library.db-wal", "library.db-shm"})
        fs::remove(library() / name);
}

void prepareOlder(std::size_t version) {
    for (const char* folder : {"originals", "renders", "incoming", "derivatives"})
        fs::create_directories(library() / folder);
    const local::UniqueFd folder(::open(library().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
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
}

} // namespace faults
