// libjpeg-turbo with its error jumps contained: every member returns false where the library gave
// up. Used by jpeg_picture.cpp alone.
#pragma once

#include "platform/local/imaging/worker/input.h"
#include "platform/local/imaging/worker/picture.h"

#include <array>
#include <csetjmp>
#include <cstdio>
#include <span>

#include <jpeglib.h>

namespace local::imaging {

class RowResizer;

// Rows of coefficient blocks that stand for a whole picture's; see keepFewRowsOfBlocks.
struct BlockRows {
    JBLOCKROW blocks; // `together` rows of `width`
    JBLOCKROW* asked; // room for `together` pointers
    std::size_t width;
    JDIMENSION together;
};

class JpegDecoder {
public:
    explicit JpegDecoder(const Input& input);
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;
    ~JpegDecoder();

    bool readHeader();
    Size size() const { return {info_.image_width, info_.image_height}; }
    bool isSupported() const;
    // The first of the segments with that number that starts with `prefix`, or nothing.
    std::span<const std::uint8_t> segment(int number, std::span<const char> prefix) const;
    bool readProfile(std::vector<std::uint8_t>& profile);

    // Starts decoding at 1/denominator of the size.
    bool start(unsigned denominator);
    Size outputSize() const { return {info_.output_width, info_.output_height}; }
    // `row` has room for a row of the output.
    bool pushRows(RowResizer& resizer, std::uint8_t* row);

    bool sawDamage() const { return errors_.num_warnings > 0; }

private:
    bool firstScanSuffices() const;
    void keepFewRowsOfBlocks();

    static JpegDecoder& of(j_common_ptr info);
    static jvirt_barray_ptr requestBlocks(j_common_ptr info, int pool, boolean zeroed,
                                          JDIMENSION width, JDIMENSION height, JDIMENSION together);
    static JBLOCKARRAY accessBlocks(j_common_ptr info, jvirt_barray_ptr rows, JDIMENSION first,
                                    JDIMENSION count, boolean writable);
    static void giveUp(j_common_ptr info);
    static void countWarning(j_common_ptr info, int level);
    static void watchProgress(j_common_ptr info);
    static boolean fill(j_decompress_ptr info);
    static void skip(j_decompress_ptr info, long count);

    const Input& input_;
    std::uint64_t offset_ = 0;
    std::array<JOCTET, 1 << 16> buffer_;
    jpeg_decompress_struct info_{};
    jpeg_error_mgr errors_{};
    jpeg_source_mgr source_{};
    jpeg_progress_mgr progress_{};
    std::jmp_buf escape_{};
};

} // namespace local::imaging
