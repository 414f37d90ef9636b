// What the header of a file tells.
#include "imaging_support.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace imaging_test;
using local::MediaKind;

namespace {

// "2024-5-6 7:8:9.120 +120", or "none".
std::string captured(const local::MediaInfo& info) {
    if (!info.captured)
        return "none";
    const auto& time = *info.captured;
    std::ostringstream text;
    text << time.year << '-' << time.month << '-' << time.day << ' ' << time.hour << ':'
         << time.minute << ':' << time.second << '.' << time.millisecond;
    if (time.offsetMinutes)
        text << ' ' << std::showpos << *time.offsetMinutes;
    return text.str();
}

// "64x48", and what it is, each with a space before it.
std::string told(const local::MediaInfo& info) {
    return std::to_string(info.width) + "x" + std::to_string(info.height) +
           (info.animated ? " animated" : "") + (info.raw ? " raw" : "") +
           (info.screenshot ? " screenshot" : "") + (info.selfie ? " selfie" : "");
}

TEST(ImagingInspection, TellsTheTypeFromTheBytesNotTheName) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", quarters(64, 48));
    run(folder, "vips copy a.jpg a.png && vips copy a.jpg a.webp && vips copy a.jpg a.tif &&"
                " vips copy a.jpg a.gif && vips copy a.jpg a.jxl && heif-enc a.jpg -o a.heic &&"
                " heif-enc -A a.jpg -o a.avif && for f in a.*; do cp $f wrong-$f.png; done");
    const std::pair<const char*, const char*> types[] = {
        {"a.jpg", "public.jpeg"},           {"a.png", "public.png"},
        {"a.webp", "org.webmproject.webp"}, {"a.tif", "public.tiff"},
        {"a.gif", "com.compuserve.gif"},    {"a.jxl", "public.jpeg-xl"},
        {"a.heic", "public.heic"},          {"a.avif", "public.avif"}};
    for (const auto& [name, type] : types)
        for (const std::string& path : {std::string(name), "wrong-" + std::string(name) + ".png"}) {
            EXPECT_EQ(infoOf(folder / path).contentType, type) << path;
            EXPECT_EQ(told(infoOf(folder / path)), "64x48") << path;
        }
}

TEST(ImagingInspection, DatesFallBackAndImpossibleOnesAreNone) {
    const Folder folder;
    writeJpeg(folder / "plain.jpg", quarters(64, 48));
    EXPECT_EQ(captured(infoOf(folder / "plain.jpg")), "none");
    const std::pair<const char*, const char*> cases[] = {
        {"-DateTimeOriginal='2024:05:06 07:08:09' -CreateDate='2020:01:01 00:00:00'",
         "2024-5-6 7:8:9.0"},
        {"-DateTimeOriginal='2024:02:29 07:08:09' -OffsetTimeOriginal=+05:30 "
         "-SubSecTimeOriginal=12",
         "2024-2-29 7:8:9.120 +330"},
        {"-DateTimeOriginal='0000:00:00 00:00:00' -CreateDate='2020:01:02 03:04:05' "
         "-OffsetTimeDigitized=-08:00 -OffsetTimeOriginal=+01:00",
         "2020-1-2 3:4:5.0 -480"},
        {"-ModifyDate='2019:12:31 23:59:59' -SubSecTime=9876", "2019-12-31 23:59:59.987"},
        {"-DateTimeOriginal='2023:02:29 07:08:09'", "none"},
        {"-DateTimeOriginal='2024:13:01 07:08:09'", "none"},
        {"-DateTimeOriginal='2024:05:06 24:00:00'", "none"},
        {"-DateTimeOriginal='    :  :     :  :  '", "none"},
        {"-DateTimeOriginal='2024:05:06 07:08:09' -OffsetTimeOriginal=+99:00", "2024-5-6 7:8:9.0"},
        {"-DateTimeOriginal='2024:05:06 07:08:09' -OffsetTimeOriginal=Z", "2024-5-6 7:8:9.0 +0"}};
    int number = 0;
    for (const auto& [tags, expected] : cases) {
        const std::string name = std::to_string(++number) + ".jpg";
        run(folder, "exiftool -q -n " + std::string(tags) + " plain.jpg -o " + name);
        EXPECT_EQ(captured(infoOf(folder / name)), expected) << tags;
    }
    run(folder, "heif-enc 2.jpg -o 2.heic && vips copy 2.jpg 2.webp && vips copy 2.jpg 2.png &&"
                " vips copy plain.jpg 2.tif && exiftool -q -overwrite_original -tagsfromfile 2.jpg"
                " -exif:all 2.tif");
    for (const char* name : {"2.heic", "2.webp", "2.png", "2.tif"})
        EXPECT_EQ(captured(infoOf(folder / name)), "2024-2-29 7:8:9.120 +330") << name;
}

TEST(ImagingInspection, SaysWhatTheMetadataTrulyTells) {
    const Folder folder;
    writeJpeg(folder / "a.jpg", quarters(64, 48));
    writeRaw(folder, "a.dng");
    run(folder,
        "exiftool -q -UserComment=Screenshot a.jpg -o shot.jpg &&"
        " exiftool -q '-LensModel=Phone 12 front camera 2.71mm f/2.2' a.jpg -o self.jpg &&"
        " exiftool -q '-LensModel=Phone 12 back camera 4.2mm f/1.6' a.jpg -o back.jpg &&"
        " vips copy a.jpg a.png && exiftool -q -PNG:Software=gnome-screenshot a.png -o s.png"
        " && vips rot a.jpg b.jpg d180 && ffmpeg -v error -framerate 5 -i a.jpg -framerate 5 -i "
        "b.jpg -filter_complex"
        " concat=n=2 -r 5 a.gif && ffmpeg -v error -i a.gif a.webp");
    const std::pair<const char*, const char*> pictures[] = {
        {"shot.jpg", "64x48 screenshot"}, {"s.png", "64x48 screenshot"},
        {"self.jpg", "64x48 selfie"},     {"back.jpg", "64x48"},
        {"a.gif", "64x48 animated"},      {"a.webp", "64x48 animated"},
        {"a.dng", "480x640 raw"}};
    for (const auto& [name, what] : pictures)
        EXPECT_EQ(told(infoOf(folder / name)), what) << name;
    EXPECT_EQ(infoOf(folder / "a.dng").contentType, "com.adobe.raw-image");
    EXPECT_EQ(captured(infoOf(folder / "a.dng")), "2024-5-6 7:8:9.0");
}

TEST(ImagingInspection, VideosTellTheirTimeAndLength) {
    const Folder folder;
    run(folder, "ffmpeg -v error -f lavfi -i testsrc=s=320x240:d=2 -c:v mpeg4 -metadata "
                "creation_time=2024-05-06T07:08:09.120000Z a.mp4 && "
                "ffmpeg -v error -i a.mp4 -c copy -movflags use_metadata_tags -metadata "
                "com.apple.quicktime.creationdate=2024-05-06T09:08:09+0200 a.mov && "
                "ffmpeg -v error -i a.mp4 -c copy -map_metadata -1 a.mkv && "
                "ffmpeg -v error -i a.mp4 -c:v mpeg2video a.ts && "
                "ffmpeg -v error -f lavfi -i sine=d=1 sound.m4a");
    const auto tells = [&](const char* name) {
        const auto info = infoOf(folder / name, MediaKind::video);
        return info.contentType + " " + captured(info);
    };
    EXPECT_EQ(tells("a.mp4"), "public.mpeg-4 2024-5-6 7:8:9.0 +0"); // it counts in seconds
    EXPECT_NEAR(infoOf(folder / "a.mp4", MediaKind::video).durationSeconds, 2, 0.1);
    EXPECT_EQ(tells("a.mov"), "com.apple.quicktime-movie 2024-5-6 9:8:9.0 +120");
    EXPECT_THAT(tells("a.mkv"), testing::EndsWith(" none"));
    EXPECT_THAT(tells("a.ts"), testing::StartsWith("public.mpeg-2-transport-stream "));
    // Two seconds before 1970, in seconds since 1904.
    std::string unset = readBytes(folder / "a.mp4");
    unset.replace(unset.find("mvhd") + 8, 4, "\x7c\x25\xb0\x7e");
    writeText(folder / "unset.m4v", unset);
    EXPECT_THAT(tells("unset.m4v"), testing::EndsWith(" none"));
    EXPECT_EQ(failureOf(folder / "sound.m4a", MediaKind::video), "The file holds no video.");
}

} // namespace
