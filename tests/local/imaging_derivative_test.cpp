// Derivatives: made after the caller was served, used while they are sound, never believed.
#include "imaging_support.h"

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

    fs::path derivative() const {
        return folder /
               ("derivatives/" + source.contentKey.substr(0, 2) + "/" + source.contentKey + ".jpg");
    }

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
        local::imaging::writeDerivative(files->derivatives->get(), key,
                                        std::vector<std::uint8_t>(size));
        fs::path path = folder / ("derivatives/" + key.substr(0, 2) + "/" + key + ".jpg");
        fs::last_write_time(path, fs::file_time_type::clock::now() - days * std::chrono::hours(24));
        return path;
    }

    std::string covered(double side) { return sizeOf(local::coverPicture(source, side, side)); }
};

TEST_F(ImagingDerivative, IsMadeOnceAndServesWhatItCovers) {
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    run(folder, "exiftool -q -n -overwrite_original -Orientation=6 a.jpg");
    const fs::path unused = old("0000000000", 9, 1'000'000);
    files->room = 1'000'100;
    EXPECT_EQ(covered(256), "256x384");
    ASSERT_TRUE(appears());
    // The maker looks whether the file is still there before it is done.
    EXPECT_TRUE(comesTrue([&] { return opened == 3 && !fs::exists(unused); }))
        << "there is no room for both";
    const auto info = infoOf(derivative());
    EXPECT_EQ(info.width, 512U);
    EXPECT_EQ(info.height, 768U);
    EXPECT_EQ(fs::status(derivative()).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
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
    const std::vector<fs::path> all{old("aa00000000", 4), old("aa00000001", 3),
                                    old("bb00000000", 2), old("cc00000000", 0)};
    noteUse(open(all[0]).get());
    const fs::path dead = folder / "derivatives/aa/.aa00000002.1.1.part";
    const fs::path living = folder / "derivatives/aa/.aa00000003.1.1.part";
    writeText(dead, "");
    writeText(living, "");
    const local::UniqueFd writer = open(living);
    ASSERT_EQ(flock(writer.get(), LOCK_EX), 0);
    EXPECT_EQ(tidyDerivatives(files->derivatives->get(), 3900), 3000U);
    EXPECT_TRUE(fs::exists(all[0]) && !fs::exists(all[1]) && fs::exists(all[2]) &&
                fs::exists(all[3]) && !fs::exists(dead) && fs::exists(living));
    EXPECT_EQ(readBytes(folder / "derivatives/CACHEDIR.TAG").substr(0, 43),
              "Signature: 8a477f597d28d172789f06886806bc55");
}

TEST_F(ImagingDerivative, WhatWasDeletedForGoodMeanwhileLeavesNone) {
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    source.open = [kept = files] { // by the caller, by the maker, and never again
        return ++kept->opened <= 2 ? open(kept->folder / "a.jpg") : local::UniqueFd();
    };
    EXPECT_EQ(covered(256), "384x256");
    EXPECT_TRUE(comesTrue([&] { return opened == 3 && !fs::exists(derivative()); }));
}

TEST_F(ImagingDerivative, ADamagedOneIsRemovedAndMadeAnew) {
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
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
        local::imaging::writeDerivative(files->derivatives->get(), key, {1, 2, 3});
        EXPECT_FALSE(local::imaging::openDerivative(files->derivatives->get(), key)) << key;
    }
    EXPECT_TRUE(fs::is_empty(folder / "derivatives"));
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    writeText(folder / ("derivatives/" + source.contentKey.substr(0, 2)), "a file in the way");
    EXPECT_EQ(covered(256), "384x256");
    source.derivativesFolder = [] { return nullptr; };
    EXPECT_EQ(covered(256), "384x256");
    source.open = [] { return local::UniqueFd(); };
    EXPECT_EQ(covered(256), "none");
}

} // namespace
