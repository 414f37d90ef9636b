#include "platform/local/imaging/worker/jpeg_decoder.h"

#include "platform/local/imaging/worker/resize.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <jerror.h>

namespace local::imaging {

namespace {
constexpr int kMostScans = 500; // each may go over the whole picture
constexpr long kMostMemory = 2'000'000'000;
} // namespace

JpegDecoder& JpegDecoder::of(j_common_ptr info) {
    return *static_cast<JpegDecoder*>(info->client_data);
}

void JpegDecoder::giveUp(j_common_ptr info) {
    std::longjmp(of(info).escape_, 1);
}

void JpegDecoder::countWarning(j_common_ptr info, int level) {
    if (level < 0)
        ++info->err->num_warnings;
}

void JpegDecoder::watchProgress(j_common_ptr info) {
    if (of(info).info_.input_scan_number > kMostScans)
        giveUp(info);
}

boolean JpegDecoder::fill(j_decompress_ptr info) {
    auto& decoder = of(reinterpret_cast<j_common_ptr>(info));
    std::size_t got =
        decoder.input_.readAt(decoder.offset_, decoder.buffer_.data(), decoder.buffer_.size());
    decoder.offset_ += got;
    if (got == 0) {
        // The file breaks off. An end marker makes the library fill what is missing.
        WARNMS(info, JWRN_JPEG_EOF);
        decoder.buffer_[0] = 0xff;
        decoder.buffer_[1] = JPEG_EOI;
        got = 2;
    }
    decoder.source_.next_input_byte = decoder.buffer_.data();
    decoder.source_.bytes_in_buffer = got;
    return TRUE;
}

void JpegDecoder::skip(j_decompress_ptr info, long count) {
    if (count <= 0)
        return;
    auto& decoder = of(reinterpret_cast<j_common_ptr>(info));
    auto left = static_cast<std::size_t>(count);
    const std::size_t buffered = std::min(left, decoder.source_.bytes_in_buffer);
    decoder.source_.next_input_byte += buffered;
    decoder.source_.bytes_in_buffer -= buffered;
    decoder.offset_ += left - buffered;
}

JpegDecoder::JpegDecoder(const Input& input) : input_(input) {
    info_.err = jpeg_std_error(&errors_);
    errors_.error_exit = giveUp;
    errors_.emit_message = countWarning;
    info_.client_data = this;
    if (setjmp(escape_))
        return;
    jpeg_create_decompress(&info_);
    info_.client_data = this;
    info_.mem->max_memory_to_use = kMostMemory;
    source_.init_source = [](j_decompress_ptr) {};
    source_.fill_input_buffer = fill;
    source_.skip_input_data = skip;
    source_.resync_to_restart = jpeg_resync_to_restart;
    source_.term_source = [](j_decompress_ptr) {};
    info_.src = &source_;
    progress_.progress_monitor = watchProgress;
    info_.progress = &progress_;
}

JpegDecoder::~JpegDecoder() {
    jpeg_destroy_decompress(&info_);
}

bool JpegDecoder::readHeader() {
    if (!info_.src || setjmp(escape_))
        return false;
    jpeg_save_markers(&info_, JPEG_APP0 + 1, 0xffff);
    jpeg_save_markers(&info_, JPEG_APP0 + 2, 0xffff);
    return jpeg_read_header(&info_, TRUE) == JPEG_HEADER_OK && info_.image_width > 0 &&
           info_.image_height > 0;
}

bool JpegDecoder::isSupported() const {
    return info_.jpeg_color_space == JCS_YCbCr || info_.jpeg_color_space == JCS_RGB ||
           info_.jpeg_color_space == JCS_GRAYSCALE;
}

std::span<const std::uint8_t> JpegDecoder::segment(int number, std::span<const char> prefix) const {
    for (auto* marker = info_.marker_list; marker; marker = marker->next)
        if (marker->marker == JPEG_APP0 + number && marker->data_length >= prefix.size() &&
            std::memcmp(marker->data, prefix.data(), prefix.size()) == 0)
            return {marker->data, marker->data_length};
    return {};
}

bool JpegDecoder::readProfile(std::vector<std::uint8_t>& profile) {
    if (setjmp(escape_))
        return false;
    JOCTET* bytes = nullptr;
    unsigned size = 0;
    if (!jpeg_read_icc_profile(&info_, &bytes, &size))
        return false;
    profile.assign(bytes, bytes + size);
    std::free(bytes);
    return true;
}

bool JpegDecoder::start(unsigned denominator) {
    if (setjmp(escape_))
        return false;
    info_.scale_num = 1;
    info_.scale_denom = denominator;
    info_.out_color_space = JCS_RGB;
    info_.do_block_smoothing = FALSE;
    const bool coarse = denominator == 8 && firstScanSuffices();
    if (coarse)
        keepFewRowsOfBlocks();
    info_.buffered_image = coarse ? TRUE : FALSE;
    if (!jpeg_start_decompress(&info_))
        return false;
    return !coarse || jpeg_start_output(&info_, 1) != FALSE;
}

// At an eighth of the size a block becomes one pixel, its mean. Most progressive files send the
// means of all components first, perhaps without their last bits. Whether what later scans would
// add is below what the eye or a JPEG of the result can show.
bool JpegDecoder::firstScanSuffices() const {
    constexpr double kUnseen = 2; // of 255
    if (!info_.progressive_mode || info_.comps_in_scan != info_.num_components || info_.Ss != 0 ||
        info_.Se != 0 || info_.Ah != 0)
        return false;
    for (int i = 0; i < info_.num_components; ++i) {
        const JQUANT_TBL* table = info_.quant_tbl_ptrs[info_.comp_info[i].quant_tbl_no];
        if (!table || table->quantval[0] / 8.0 * ((1 << info_.Al) - 1) > kUnseen)
            return false;
    }
    return true;
}

// For a progressive file the library keeps the coefficients of the whole picture, 144 MB of 24
// megapixels, and filling that memory takes longer than the decoding. Of a single scan it shows
// each row of blocks as soon as it has read it and never returns to it, so a few rows, used in
// turn, will do.
void JpegDecoder::keepFewRowsOfBlocks() {
    info_.mem->request_virt_barray = requestBlocks;
    info_.mem->access_virt_barray = accessBlocks;
}

jvirt_barray_ptr JpegDecoder::requestBlocks(j_common_ptr info, int pool, boolean, JDIMENSION width,
                                            JDIMENSION, JDIMENSION together) {
    const std::size_t bytes = std::size_t{width} * together * sizeof(JBLOCK);
    auto* rows = static_cast<BlockRows*>(info->mem->alloc_small(info, pool, sizeof(BlockRows)));
    rows->blocks = static_cast<JBLOCKROW>(info->mem->alloc_large(info, pool, bytes));
    rows->asked =
        static_cast<JBLOCKROW*>(info->mem->alloc_small(info, pool, together * sizeof(JBLOCKROW)));
    rows->width = width;
    rows->together = together;
    std::memset(rows->blocks, 0, bytes);
    return reinterpret_cast<jvirt_barray_ptr>(rows);
}

JBLOCKARRAY JpegDecoder::accessBlocks(j_common_ptr info, jvirt_barray_ptr opaque, JDIMENSION first,
                                      JDIMENSION count, boolean writable) {
    BlockRows& rows = *reinterpret_cast<BlockRows*>(opaque);
    if (count > rows.together)
        giveUp(info);
    for (JDIMENSION i = 0; i < count; ++i) {
        rows.asked[i] = rows.blocks + (first + i) % rows.together * rows.width;
        // Where the file breaks off nothing is written, and grey is better than an earlier row.
        for (std::size_t x = 0; writable && x < rows.width; ++x)
            rows.asked[i][x][0] = 0;
    }
    return rows.asked;
}

bool JpegDecoder::pushRows(RowResizer& resizer, std::uint8_t* row) {
    if (setjmp(escape_))
        return false;
    while (info_.output_scanline < info_.output_height) {
        JSAMPROW rows = row;
        if (jpeg_read_scanlines(&info_, &rows, 1) != 1)
            return false;
        resizer.push(row);
    }
    return true;
}

} // namespace local::imaging
