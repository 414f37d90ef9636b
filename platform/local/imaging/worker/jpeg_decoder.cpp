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
    // At an eighth a block becomes one pixel, its mean, which progressive files send first.
    const bool coarse = denominator == 8 && jpeg_has_multiple_scans(&info_);
    info_.buffered_image = coarse ? TRUE : FALSE;
    if (!jpeg_start_decompress(&info_))
        return false;
    return !coarse || readCoarseScans();
}

bool JpegDecoder::readCoarseScans() {
    int status = JPEG_REACHED_SOS;
    while (status != JPEG_REACHED_EOI) {
        status = jpeg_consume_input(&info_);
        if (status == JPEG_SUSPENDED)
            return false;
        if (status == JPEG_SCAN_COMPLETED && coarseScansSuffice())
            break;
        if (info_.input_scan_number > kMostScans)
            return false;
    }
    return jpeg_start_output(&info_, info_.input_scan_number) != FALSE;
}

// Whether every component's means are there, and what later scans add to them is below what the
// eye or a JPEG of the result could show.
bool JpegDecoder::coarseScansSuffice() const {
    constexpr double kUnseen = 2; // of 255
    for (int i = 0; i < info_.num_components; ++i) {
        const int missingBits = info_.coef_bits ? info_.coef_bits[i][0] : -1;
        if (missingBits < 0)
            return false;
        const JQUANT_TBL* table = info_.comp_info[i].quant_table;
        const double step = table ? table->quantval[0] / 8.0 : 1;
        if (step * ((1 << missingBits) - 1) > kUnseen)
            return false;
    }
    return true;
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
