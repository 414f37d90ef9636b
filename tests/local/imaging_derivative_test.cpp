// Derivatives: made after the caller was served, used while they are sound, never believed.
#include "imaging_support.h"
#include "tests/local/support.h"

#include "platform/local/imaging/derivative_file.h"
#include "platform/local/imaging/derivative_room.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

using namespace imaging_test;
using namespace local::imaging;

namespace {

// What the sources' closures use: they may be called after the test has ended.
struct Files {
    const Folder folder;
    std::shared_ptr<const local::UniqueFd> derivatives;
    std::atomic<std::uint64_t> room = 1 << 30;
    std::atomic<int> opened = 0;
};

class ImagingDerivative : public testing::Test {
protected:
    const std::shared_ptr<Files> files = std::make_shared<Files>();
    const Folder& folder = files->folder;
    std::atomic<int>& opened = files->opened;
    local::PictureSource source;

    void SetUp() override {
        writeJpeg(folder / "a.jpg", quarters(2400, 1600));
        fs::create_directory(folder / "derivatives");
        files->derivatives = std::make_shared<const local::UniqueFd>(
            ::open((folder / "derivatives").c_str(), O_DIRECTORY | O_CLOEXEC));
        // Another key for each test: the process remembers what it could not make.
        static int number = 10;
        source = {local::MediaKind::photo, "abcdef00" + std::to_string(++number),
                  [kept = files] {
                      ++kept->opened;
                      return open(kept->folder / "a.jpg");
                  },
                  [kept = files] { return kept->derivatives; },
                  [kept = files] { return std::optional<std::uint64_t>(kept->room); }};
    }

    fs::path pathOf(const std::string& key) const {
        return folder / ("derivatives/" + key.substr(0, 2) + "/" + key + ".jpg");
    }
    fs::path derivative() const { return pathOf(source.contentKey); }

    static bool comesTrue(const std::function<bool()>& condition) {
        for (int i = 0; i < 4000 && !condition(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return condition();
    }

    bool appears() const {
        return comesTrue([this] { return fs::exists(derivative()); });
    }

    // A derivative last used so many days ago.
    fs::path old(const std::string& key, int days, std::size_t size = 1000) const {
        writeDerivative(files->derivatives->get(), key, std::vector<std::uint8_t>(size));
        fs::path path = pathOf(key);
        fs::last_write_time(path, fs::file_time_type::clock::now() - days * std::chrono::hours(24));
        return path;
    }

    std::string covered(double side) { return sizeOf(local::coverPicture(source, side, side)); }
};

TEST_F(ImagingDerivative, IsMadeOnceAndServesWhatItCovers) {
    run(folder, "exiftool -q -n -overwrite_original -Orientation=6 a.jpg");
    const fs::path unused = old("0000000000", 9, 1'000'000);
    files->room = 1'000'100;
    EXPECT_EQ(covered(256), "256x384");
    ASSERT_TRUE(appears());
    // The maker looks whether the file is still there before it is done.
    EXPECT_TRUE(comesTrue([&] { return opened == 3 && !fs::exists(unused); }))
        << "there is no room for both";
    EXPECT_EQ(sizeOf(cover(derivative(), -1, -1)), "512x768");
    EXPECT_EQ(fs::status(derivative()).permissions(), fs::perms(0600));
    opened = 0;
    EXPECT_EQ(covered(256), "256x384");
    EXPECT_EQ(covered(512), "512x768");
    const auto picture = local::coverPicture(source, 600, 100);
    EXPECT_EQ(opened, 1) << "600 wide is more than it has";
    EXPECT_EQ(sizeOf(picture), "600x900");
    EXPECT_EQ(covered(513), "513x770");
    EXPECT_EQ(sizeOf(local::coverPicture(source, -1, -1)), "1600x2400");
    EXPECT_EQ(opened, 3);
    const auto small = local::coverPicture(source, 100, 100);
    EXPECT_TRUE(isNear(colourAt(*small, 0.2, 0.2), {0, 0, 255}, 15));
}

TEST_F(ImagingDerivative, TheFolderKeepsToItsRoomAndLosesWhatWasUsedLeastRecently) {
    for (const auto& [key, days] :
         {std::pair{"aa00000000", 4}, {"aa00000001", 3}, {"bb00000000", 2}, {"cc00000000", 0}})
        old(key, days);
    noteUse(open(pathOf("aa00000000")).get());
    const fs::path living = folder / "derivatives/aa/.aa00000003.1.1.part";
    const local::UniqueFd writer = open(writeText(living, ""));
    ASSERT_EQ(flock(writer.get(), LOCK_EX), 0);
    writeText(folder / "derivatives/aa/.aa00000002.1.1.part", ""); // of a dead process
    EXPECT_EQ(tidyDerivatives(files->derivatives->get(), 3900), 3000U);
    EXPECT_THAT(filesBelow(folder / "derivatives"),
                ElementsAre("CACHEDIR.TAG", "aa/.aa00000003.1.1.part", "aa/aa00000000.jpg",
                            "bb/bb00000000.jpg", "cc/cc00000000.jpg"));
    EXPECT_EQ(readBytes(folder / "derivatives/CACHEDIR.TAG").substr(0, 43),
              "Signature: 8a477f597d28d172789f06886806bc55");
}

TEST_F(ImagingDerivative, WhatWasDeletedForGoodMeanwhileLeavesNone) {
    source.open = [kept = files] { // by the caller, by the maker, and never again
        return ++kept->opened <= 2 ? open(kept->folder / "a.jpg") : local::UniqueFd();
    };
    EXPECT_EQ(covered(256), "384x256");
    EXPECT_TRUE(comesTrue([&] { return opened == 3 && !fs::exists(derivative()); }));
}

TEST_F(ImagingDerivative, ADamagedOneIsRemovedAndMadeAnew) {
    fs::create_directory(derivative().parent_path());
    writeJpeg(folder / "whole.jpg", quarters(768, 512));
    const std::string whole = readBytes(folder / "whole.jpg");
    for (const std::string& bytes : {std::string(), std::string("nonsense, not a JPEG at all"),
                                     whole.substr(0, whole.size() / 2)}) {
        writeText(derivative(), bytes);
        opened = 0;
        EXPECT_EQ(covered(256), "384x256");
        EXPECT_GE(opened, 1);
        ASSERT_TRUE(appears());
        EXPECT_GT(fs::file_size(derivative()), 1000U);
    }
}

TEST_F(ImagingDerivative, IsNotMadeWhereItWouldNotPay) {
    writeJpeg(folder / "a.jpg", quarters(1000, 700));
    EXPECT_EQ(covered(256), "366x256");
    const fs::path none = derivative();
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    source.contentKey += '0';
    EXPECT_EQ(covered(256), "384x256");
    ASSERT_TRUE(appears()) << "one is made after the other";
    EXPECT_FALSE(fs::exists(none));
}

TEST_F(ImagingDerivative, NamesStayInsideTheFolderAndFailuresAreSilent) {
    for (const char* key : {"", "ab", "../../../etc", "ABCDEF0011", "abcdef00/1122"}) {
        writeDerivative(files->derivatives->get(), key, {1, 2, 3});
        EXPECT_FALSE(openDerivative(files->derivatives->get(), key)) << key;
    }
    EXPECT_TRUE(fs::is_empty(folder / "derivatives"));
    writeText(folder / ("derivatives/" + source.contentKey.substr(0, 2)), "a file in the way");
    EXPECT_EQ(covered(256), "384x256");
    source.derivativesFolder = [] { return nullptr; };
    EXPECT_EQ(covered(256), "384x256");
    source.open = [] { return local::UniqueFd(); };
    EXPECT_EQ(covered(256), "none");
}

} // namespace
