#include "tests/faults/prepared_libraries.h"

#include "bridge/entry_points.h"
#include "platform/asset.h"
#include "platform/collection.h"
#include "platform/collection_change_requests.h"
#include "platform/local/catalogue/catalogue_schema.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/library/library.h"
#include "platform/photo_library.h"
#include "tests/support/jni_double.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#define CALL(method) Java_com_morrowfen_lumatrice_service_PhotosService_native##method

namespace faults {

namespace {

namespace fs = std::filesystem;

fs::path home() {
    return std::getenv("HOME");
}

Place here() {
    return {home()};
}

std::string readBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// For preparations only.
void require(bool done, const char* what) {
    if (done)
        return;
    std::fprintf(stderr, "a library could not be prepared: %s\n", what);
    std::abort();
}

void touch(const fs::path& path) {
    const std::ofstream made(path);
    require(made.good(), "a marker");
}

// As 2021-03-04 05:06:07, so that the capture date does not change from run to run.
void setTime(const fs::path& path, long second) {
    const timespec time{1614834367 + second, 0};
    const timespec both[2] = {time, time};
    utimensat(AT_FDCWD, path.c_str(), both, 0);
}

std::string insertOldAsset(local::CatalogueConnection& connection, int number) {
    const local::Uuid uuid = local::randomUuid();
    const std::string name = local::uppercaseText(uuid) + ".jpg";
    const std::string bytes = readBytes(pathInHome("import.jpg"));
    XXH128_canonical_t hash;
    XXH128_canonicalFromHash(&hash, XXH3_128bits(bytes.data(), bytes.size()));
    const fs::path shelf = here().library() / "originals" / name.substr(0, 2);
    fs::create_directories(shelf);
    fs::copy_file(pathInHome("import.jpg"), shelf / name);
    connection
        .statement("INSERT INTO asset (uuid, created, media, width, height, hidden, filename, "
                   "content_type, stored_as, hash, size, added) VALUES (?1, ?2, 1, 64, 48, ?3, "
                   "'old.jpg', 'public.jpeg', ?4, ?5, ?6, 1600000000000)")
        .bindBlob(1, uuid)
        .bind(2, std::int64_t{1600000000000} + number)
        .bind(3, std::int64_t{number % 2})
        .bind(4, name)
        .bindBlob(5, hash.digest)
        .bind(6, static_cast<std::int64_t>(bytes.size()))
        .run();
    return local::uppercaseText(uuid) + "/L0/001";
}

} // namespace

std::string pathInHome(const std::string& name) {
    return home() / name;
}

void writePictures(const Place& place) {
    fs::create_directories(place.home);
    int number = 0;
    for (const char* name : {"import.jpg", "second.jpg", "plain.jpg", "favorite.jpg", "hidden.jpg",
                             "edited.jpg", "trashed.jpg", "rendered.jpg", "again.jpg"}) {
        local::Pixels pixels{64, 48, std::vector<std::uint8_t>(64 * 48 * 3)};
        ++number;
        for (std::size_t i = 0; i < pixels.rgb.size(); ++i)
            pixels.rgb[i] =
                static_cast<std::uint8_t>(i * 7 + i / 91 * static_cast<unsigned>(number));
        const auto jpeg = local::encodeJpeg(pixels, 90);
        require(jpeg.has_value(), "a picture");
        std::ofstream(place.file(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(jpeg->data()),
                   static_cast<std::streamsize>(jpeg->size()));
        setTime(place.file(name), number);
    }
}

std::string importPicture(const std::string& path) {
    jni::Environment jvm;
    const auto result =
        jvm.textsOf(CALL(ImportAssets)(jvm.env(), nullptr, jvm.array({jvm.string(path)})));
    return result.at(0).value_or("");
}

std::string makeAlbum(const std::string& title, const std::string& parent) {
    jni::Environment jvm;
    const jstring made =
        CALL(CreateAlbum)(jvm.env(), nullptr, jvm.string(title), jvm.string(parent));
    return made ? jni::Environment::textOf(made) : "";
}

std::string makeFolder(const std::string& title) {
    jni::Environment jvm;
    const jstring made = CALL(CreateFolder)(jvm.env(), nullptr, jvm.string(title), nullptr);
    return made ? jni::Environment::textOf(made) : "";
}

bool addToAlbum(const std::string& album, const std::string& asset) {
    jni::Environment jvm;
    return CALL(AddAssetsToAlbum)(jvm.env(), nullptr, jvm.string(album),
                                  jvm.array({jvm.string(asset)})) == 1;
}

bool applyEdit(const std::string& asset, const std::string& rendered) {
    jni::Environment jvm;
    return CALL(ApplyEdit)(jvm.env(), nullptr, jvm.string(asset), jvm.string(rendered)) == 0;
}

bool fileInto(const std::string& album, const std::string& folder) {
    using namespace platform;
    const auto child = fetchAssetCollectionsWithLocalIdentifiers({album}).objectAtIndex(0);
    const auto parent = fetchCollectionListsWithLocalIdentifiers({folder}).objectAtIndex(0);
    if (!child || !parent)
        return false;
    std::optional<NSError> error;
    return performChangesAndWait(
        [&] {
            if (const auto request = changeRequestForCollectionList(*parent))
                addChildCollections(*request, {*child});
        },
        error);
}

Names prepareUsual() {
    jni::Environment jvm;
    Names names;
    for (const char* name : {"plain", "favorite", "hidden", "edited", "trashed"}) {
        names[name] = importPicture(pathInHome(std::string(name) + ".jpg"));
        require(!names[name].empty(), name);
    }
    const auto only = [&](const char* name) { return jvm.array({jvm.string(names[name])}); };
    names["Album"] = makeAlbum("Album");
    names["Other"] = makeAlbum("Other");
    names["Folder"] = makeFolder("Folder");
    names["Inner"] = makeAlbum("Inner", names["Folder"]);
    for (const char* member : {"edited", "plain", "trashed"})
        require(addToAlbum(names["Album"], names[member]), "a member");
    require(addToAlbum(names["Other"], names["favorite"]), "a member");
    require(addToAlbum(names["Inner"], names["favorite"]), "a member");
    require(CALL(SetFavorite)(jvm.env(), nullptr, only("favorite"), 1) == 1, "a favourite");
    require(CALL(SetHidden)(jvm.env(), nullptr, only("hidden"), 1) == 1, "a hidden asset");
    require(applyEdit(names["edited"], pathInHome("rendered.jpg")), "an edit");
    require(applyEdit(names["trashed"], pathInHome("again.jpg")), "an edit in the trash");
    require(CALL(DeleteAssets)(jvm.env(), nullptr, only("trashed")) == 1, "a trashed asset");
    return names;
}

Names prepareLeftBehind() {
    Names names = prepareUsual();
    const fs::path library = here().library();
    const auto copyTo = [&](const fs::path& path) {
        fs::create_directories(path.parent_path());
        fs::copy_file(pathInHome("import.jpg"), path);
    };
    const std::string original = local::uppercaseText(local::randomUuid()) + ".jpg";
    copyTo(library / "originals" / original.substr(0, 2) / original);
    touch(library / "incoming" / (original + ".importing"));
    const std::string part = local::uppercaseText(local::randomUuid()) + ".jpg";
    copyTo(library / "incoming" / part);
    touch(library / "incoming" / (part + ".importing"));
    const std::string render = local::uppercaseText(local::randomUuid()) + ".jpg";
    copyTo(library / "renders" / render.substr(0, 2) / render);
    touch(library / "incoming" / (render + ".editing"));
    copyTo(library / "incoming" / (local::uppercaseText(local::randomUuid()) + ".edit") /
           "rendered.jpg");
    const std::string discarded = local::uppercaseText(local::randomUuid()) + ".jpg";
    const std::string path = "originals/" + discarded.substr(0, 2) + "/" + discarded;
    copyTo(library / path);
    const auto connection = local::Library::open()->connectionForChanges();
    connection->statement("INSERT INTO discarded_file VALUES (?1)").bind(1, path).run();
    return names;
}

Names prepareDamaged() {
    Names names = prepareUsual();
    const std::string stray = local::uppercaseText(local::randomUuid()) + ".jpg";
    names["stray"] = "originals/" + stray.substr(0, 2) + "/" + stray;
    const fs::path path = here().library() / names["stray"];
    fs::create_directories(path.parent_path());
    fs::copy_file(pathInHome("import.jpg"), path);
    setTime(path, 0); // a young one may belong to an import at work
    const auto connection = local::Library::open()->connectionForChanges();
    connection->execute("UPDATE library SET listed = listed + 5");
    return names;
}

void mendCount() {
    const auto connection = local::Library::open()->connectionForChanges();
    connection->execute("UPDATE library SET listed = listed - 5");
}

void takeStrayAway(const Names& names) {
    fs::remove(here().library() / names.at("stray"));
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
    Names names;
    for (int number = 0; number < 3; ++number)
        names["old" + std::to_string(number)] = insertOldAsset(connection, number);
    connection.execute("INSERT INTO favorite SELECT created, n FROM asset WHERE n < 3");
    return names;
}

Names prepareNothing() {
    return {};
}

} // namespace faults
