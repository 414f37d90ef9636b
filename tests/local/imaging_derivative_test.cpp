// Derivatives: made after the caller was served, used while they are sound, never believed.
#include "imaging_support.h"

#include "platform/local/imaging/derivative_file.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include <fcntl.h>

using namespace imaging_test;

namespace {

// What the sources' closures use: they may be called after the test has ended.
struct Files {
    const Folder folder;
    local::UniqueFd derivatives;
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
        files->derivatives.reset(::open((folder / "derivatives").c_str(), O_DIRECTORY | O_CLOEXEC));
        // Another key for each test: the process remembers what it could not make.
        static int number = 10;
        source = {local::MediaKind::photo, "abcdef00" + std::to_string(++number),
                  [kept = files] {
                      ++kept->opened;
                      return open(kept->folder / "a.jpg");
                  },
                  [kept = files] { return kept->derivatives.get(); }};
    }

    fs::path derivative() const {
        return folder /
               ("derivatives/" + source.contentKey.substr(0, 2) + "/" + source.contentKey + ".jpg");
    }

    bool appears() const {
        for (int i = 0; i < 400 && !fs::exists(derivative()); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return fs::exists(derivative());
    }

    std::string covered(double side) { return sizeOf(local::coverPicture(source, side, side)); }
};

TEST_F(ImagingDerivative, IsMadeOnceAndServesWhatItCovers) {
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    run(folder, "exiftool -q -n -overwrite_original -Orientation=6 a.jpg");
    EXPECT_EQ(covered(256), "256x384");
    ASSERT_TRUE(appears());
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

TEST_F(ImagingDerivative, ADamagedOneIsRemovedAndMadeAnew) {
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    fs::create_directory(derivative().parent_path());
    writeJpeg(folder / "whole.jpg", quarters(768, 512));
    const std::string whole = read(folder / "whole.jpg");
    for (const std::string& bytes : {std::string(), std::string("nonsense, not a JPEG at all"),
                                     whole.substr(0, whole.size() / 2)}) {
        write(derivative(), bytes);
        opened = 0;
        EXPECT_EQ(covered(256), "384x256");
        EXPECT_EQ(opened, 1);
        ASSERT_TRUE(appears());
        EXPECT_GT(fs::file_size(derivative()), 1000U);
    }
}

TEST_F(ImagingDerivative, IsNotMadeWhereItWouldNotPay) {
    writeJpeg(folder / "a.jpg", quarters(1000, 700));
    EXPECT_EQ(covered(256), "366x256");
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    EXPECT_FALSE(fs::exists(derivative()));
}

TEST_F(ImagingDerivative, NamesStayInsideTheFolderAndFailuresAreSilent) {
    for (const char* key : {"", "ab", "../../../etc", "ABCDEF0011", "abcdef00/1122"}) {
        local::imaging::writeDerivative(files->derivatives.get(), key, {1, 2, 3});
        EXPECT_FALSE(local::imaging::openDerivative(files->derivatives.get(), key)) << key;
    }
    EXPECT_TRUE(fs::is_empty(folder / "derivatives"));
    writeJpeg(folder / "a.jpg", quarters(2400, 1600));
    write(folder / ("derivatives/" + source.contentKey.substr(0, 2)), "a file in the way");
    EXPECT_EQ(covered(256), "384x256");
    source.derivativesFolder = [] { return -1; };
    EXPECT_EQ(covered(256), "384x256");
    source.open = [] { return local::UniqueFd(); };
    EXPECT_EQ(covered(256), "none");
    std::this_thread::sleep_for(std::chrono::milliseconds(400)); // the maker meets the file too
}

} // namespace
