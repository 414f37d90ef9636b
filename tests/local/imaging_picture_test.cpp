// What pictures look like: size, colour, orientation, by format.
#include "imaging_support.h"

#include <cmath>
#include <limits>

using namespace imaging_test;
using local::MediaKind;

namespace {

constexpr std::array<Colour, 4> kUpright{kRed, kGreen, kBlue, kWhite};

// The colours of the corners, in reading order.
testing::AssertionResult showsCorners(const std::optional<local::Pixels>& picture,
                                      const std::array<Colour, 4>& colours = kUpright,
                                      int tolerance = 12) {
    if (!picture)
        return testing::AssertionFailure() << "no picture";
    for (int i = 0; i < 4; ++i) {
        auto result = isNear(colourAt(*picture, i % 2 ? 0.8 : 0.2, i / 2 ? 0.8 : 0.2),
                             colours[static_cast<std::size_t>(i)], tolerance);
        if (!result)
            return result << " in corner " << i;
    }
    return testing::AssertionSuccess();
}

Colour middleOf(const fs::path& path) {
    const auto picture = cover(path, 64, 64);
    return picture ? colourAt(*picture, 0.5, 0.5) : Colour{-1, -1, -1};
}

TEST(ImagingPicture, CoversTheTargetWithItsAspectKept) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", quarters(1200, 800));
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    struct Case {
        double width, height;
        std::string size;
    };
    for (const auto& [width, height, size] :
         {Case{256, 256, "384x256"}, Case{256, 10, "256x171"}, Case{100, 400, "600x400"},
          Case{2400, 1, "2400x1600"}, Case{0.5, 0.5, "1x1"}, Case{-1, -1, "1200x800"},
          Case{0, 5, "none"}, Case{5, 0, "none"}, Case{-1, 5, "none"}, Case{-2, -2, "none"},
          Case{kNan, 5, "none"}, Case{5, kNan, "none"}, Case{kInfinite, 5, "none"},
          Case{-kInfinite, -1, "none"}})
        EXPECT_EQ(sizeOf(cover(folder / "a.jpg", width, height)), size) << width << " " << height;
    EXPECT_TRUE(showsCorners(cover(folder / "a.jpg", 2400, 1600)));
    // Where the quarters meet both colours have the same share: what was in the middle stays there.
    for (const double side : {240.0, 1000.0}) {
        const auto scaled = cover(folder / "a.jpg", side, side);
        EXPECT_NEAR(colourAt(*scaled, 0.5, 0.2)[1], 128, 4) << side;
        EXPECT_NEAR(colourAt(*scaled, 0.2, 0.5)[2], 128, 4) << side;
    }
    // Huge targets stop at the cap.
    EXPECT_EQ(sizeOf(cover(folder / "a.jpg", 1e300, 1e300)), "12727x8485");
    writeJpeg(folder / "thin.jpg", quarters(2000, 2));
    EXPECT_EQ(sizeOf(cover(folder / "thin.jpg", 512, 512)), "65500x65");
}

TEST(ImagingPicture, EveryOrientationComesUpright) {
    const Folder folder;
    const std::array<std::array<Colour, 4>, 8> seen{{
        kUpright,
        {kGreen, kRed, kWhite, kBlue},
        {kWhite, kBlue, kGreen, kRed},
        {kBlue, kWhite, kRed, kGreen},
        {kRed, kBlue, kGreen, kWhite},
        {kBlue, kRed, kWhite, kGreen},
        {kWhite, kGreen, kBlue, kRed},
        {kGreen, kWhite, kRed, kBlue},
    }};
    writeJpeg(folder / "a.jpg", quarters(640, 320));
    run(folder, "for n in 1 2 3 4 5 6 7 8; do exiftool -q -n -Orientation=$n a.jpg -o $n.jpg &&"
                " vips copy $n.jpg $n.png && vips copy $n.jpg $n.tif && vips copy $n.jpg $n.webp;"
                " done");
    for (std::size_t n = 1; n <= 8; ++n)
        for (const char* type : {".jpg", ".png", ".tif", ".webp"}) {
            const fs::path path = folder / (std::to_string(n) + type);
            const bool turned = n >= 5;
            EXPECT_EQ(infoOf(path).width, turned ? 320U : 640U) << path;
            const auto picture = cover(path, 100, 100);
            EXPECT_EQ(sizeOf(picture), turned ? "100x200" : "200x100") << path;
            EXPECT_TRUE(showsCorners(picture, seen[n - 1])) << path;
        }
}

// HEIF states a turn in a property of its own; what EXIF says beside it is a copy. The encoder at
// hand writes none, so the pixel information, which nobody needs, makes room for it: a quarter to
// the right.
TEST(ImagingPicture, HeifIsTurnedOnce) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", quarters(640, 320));
    run(folder, "exiftool -q -n -Orientation=6 a.jpg -o 6.jpg && heif-enc 6.jpg -o 6.heic &&"
                " heif-enc -A 6.jpg -o 6.avif; for f in 6.heic 6.avif; do grep -q irot $f ||"
                " sed -i 's/pixi./irot\\x03/' $f; done"); // newer encoders turn by themselves
    for (const char* name : {"6.heic", "6.avif"}) {
        EXPECT_EQ(infoOf(folder / name).height, 640U) << name;
        const auto picture = cover(folder / name, 100, 100);
        EXPECT_EQ(sizeOf(picture), "100x200") << name;
        EXPECT_TRUE(showsCorners(picture, {kBlue, kRed, kWhite, kGreen}, 20)) << name;
    }
}

TEST(ImagingPicture, HeifPreviewsServeSmallTargetsOnly) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", quarters(1280, 640));
    run(folder, "heif-enc --thumb 320 a.jpg -o a.heic");
    for (const auto& [side, size] : {std::pair{100.0, "200x100"}, {300.0, "600x300"}}) {
        const auto picture = cover(folder / "a.heic", side, side);
        EXPECT_EQ(sizeOf(picture), size);
        EXPECT_TRUE(showsCorners(picture));
    }
}

TEST(ImagingPicture, ColoursBecomeSrgb) {
    const Folder folder;
    writeJpeg(folder / "plain.jpg", flat(400, 300, {200, 100, 50}), 100);
    run(folder, "vips copy plain.jpg plain.png && vips webpsave plain.jpg plain.webp --lossless &&"
                // The same numbers, said to be in other colour spaces.
                " exiftool -q '-icc_profile<=/usr/share/color/icc/compatibleWithAdobeRGB1998.icc'"
                " plain.jpg -o adobe.jpg && vips copy adobe.jpg adobe.png &&"
                " exiftool -q -InteropIndex=R03 plain.jpg -o stated.jpg &&"
                " vips icc_transform plain.jpg p3.png p3 --input-profile srgb");
    constexpr Colour kPlain{200, 100, 50};
    // 200,100,50 of Adobe RGB (1998), by the published matrices and curves.
    constexpr Colour kFromAdobe{227, 100, 42};
    for (const char* name : {"plain.jpg", "plain.png", "plain.webp", "p3.png"})
        EXPECT_TRUE(isNear(middleOf(folder / name), kPlain, 2)) << name;
    for (const char* name : {"adobe.jpg", "adobe.png", "stated.jpg"})
        EXPECT_TRUE(isNear(middleOf(folder / name), kFromAdobe, 2)) << name;

    // Display P3, whose 200,100,50 is 215,93,31 in sRGB, by either decoder.
    run(folder, "vips icc_transform plain.jpg srgb.png p3 --input-profile srgb &&"
                " exiftool -q -b -icc_profile srgb.png > p3.icc &&"
                " exiftool -q '-icc_profile<=p3.icc' plain.jpg -o wide.jpg &&"
                " vips copy wide.jpg wide.png && vips copy wide.jpg wide.tif");
    for (const char* name : {"wide.jpg", "wide.png", "wide.tif"})
        EXPECT_TRUE(isNear(middleOf(folder / name), {215, 93, 31}, 2)) << name;
}

TEST(ImagingPicture, UnusualStillsBecomeEightBitRgbOnWhite) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", flat(400, 300, {200, 100, 50}), 100);
    run(folder, "vips copy a.jpg a.png && vips bandjoin_const a.png b.png 255 &&"
                " vips linear b.png clear.png '1 1 1 0' '0 0 0 0' --uchar &&"
                " vips colourspace a.png deep.png rgb16 && vips colourspace a.png grey.png b-w &&"
                " vips copy grey.png grey.jpg && vips copy deep.png deep.tif &&"
                " vips icc_transform a.png cmyk.jpg cmyk --input-profile srgb && vips copy a.png "
                "a.gif && vips jxlsave a.png a.jxl --lossless && vips copy grey.png grey.jxl");
    EXPECT_TRUE(isNear(middleOf(folder / "clear.png"), kWhite, 2));
    for (const char* name : {"deep.png", "deep.tif", "a.gif", "a.jxl"})
        EXPECT_TRUE(isNear(middleOf(folder / name), {200, 100, 50}, 3)) << name;
    EXPECT_TRUE(isNear(middleOf(folder / "cmyk.jpg"), {200, 100, 50}, 12));
    for (const char* name : {"grey.png", "grey.jpg", "grey.jxl"}) {
        const Colour grey = middleOf(folder / name);
        EXPECT_TRUE(isNear(grey, {grey[0], grey[0], grey[0]}, 1)) << name;
        EXPECT_NEAR(grey[0], 126, 5) << name; // 124 or 128 by the version of libvips
    }
}

TEST(ImagingPicture, ProgressiveJpegShowsTheSameFromItsFirstScans) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", quarters(2400, 1600), 90);
    run(folder, "vips jpegsave a.jpg p.jpg --interlace --Q 85 &&"
                " vips jpegsave a.jpg coarse.jpg --interlace --Q 20");
    for (const char* name : {"p.jpg", "coarse.jpg"})
        for (const double side : {100.0, 190.0, 700.0})
            EXPECT_TRUE(showsCorners(cover(folder / name, side, side), kUpright, 6))
                << name << side;
}

TEST(ImagingPicture, RawIsDevelopedUpright) {
    const Folder folder;
    writeRaw(folder, "a.dng");
    EXPECT_EQ(sizeOf(cover(folder / "a.dng", 100, 100)), "100x134");
    const auto large = cover(folder / "a.dng", 400, 400);
    ASSERT_EQ(sizeOf(large), "400x534");
    // The top of the sensor, bright, is on the right.
    EXPECT_GT(colourAt(*large, 0.9, 0.5)[1], colourAt(*large, 0.1, 0.5)[1] + 50);
    // On its corner, the rows are diagonals of the picture; pixels may be wider than high.
    writeRaw(folder, "corner.dng", "480 640", "-CFALayout=2");
    writeRaw(folder, "wide.dng", "480 640", "-IFD0:DefaultScale='2 1'");
    for (const auto& [name, width, height] :
         {std::tuple{"corner.dng", 678U, 451U}, {"wide.dng", 480U, 1280U}}) {
        EXPECT_EQ(infoOf(folder / name).width, width) << "listed as it comes out of developing";
        const auto picture = cover(folder / name, -1, -1);
        EXPECT_EQ(sizeOf(picture), std::to_string(width) + "x" + std::to_string(height));
    }
}

TEST(ImagingPicture, VideosShowAKeyFrameInTheRightColours) {
    const Folder folder;
    run(folder,
        "ffmpeg -v error -f lavfi -i color=0xc86432:s=1280x720:d=2,format=rgb24 -vf scale="
        "out_color_matrix=bt709:out_range=tv -colorspace bt709 -pix_fmt yuv420p -c:v libx264 "
        "hd.mp4 && ffmpeg -v error -i hd.mp4 -vf scale=640:-1 -colorspace bt709 -c:v libx264 "
        "stated.mp4 && ffmpeg -v error -i hd.mp4 -c:v mpeg4 -q:v 2 unstated.avi &&"
        "ffmpeg -v error -f lavfi -i color=0xc86432:s=640x480:d=2 -c:v mpeg4 -q:v 2 sd.avi &&"
        "ffmpeg -v error -f lavfi -i color=0xc86432:s=640x480:d=2 -c:v mjpeg -q:v 2 "
        "-pix_fmt yuvj420p full.mov && "
        "exiftool -q -n -Rotation=90 hd.mp4 -o turned.mp4");
    // A small one is taken for BT.709 when it says so, a large one also when it says nothing.
    for (const char* name : {"hd.mp4", "stated.mp4", "unstated.avi", "sd.avi", "full.mov"}) {
        const auto picture = cover(folder / name, 128, 128, MediaKind::video);
        ASSERT_TRUE(picture) << name;
        EXPECT_TRUE(isNear(colourAt(*picture, 0.5, 0.5), {200, 100, 50}, 3)) << name;
    }
    EXPECT_EQ(sizeOf(cover(folder / "turned.mp4", 128, 128, MediaKind::video)), "128x228");
    EXPECT_EQ(infoOf(folder / "turned.mp4", MediaKind::video).width, 720U);
}

} // namespace
