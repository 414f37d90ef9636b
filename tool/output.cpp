#include "tool/output.h"

#include "bridge/utf8.h"
#include "tool/text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <utility>

namespace tool {

namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t narrowest = 12; // of a column that is cut

std::optional<std::size_t> columnsOfTerminal(int descriptor) {
    winsize size{};
    if (isatty(descriptor) == 0)
        return std::nullopt;
    const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? std::size_t{size.ws_col} : 80;
}

std::string padded(const std::string& cell, std::size_t width, bool right) {
    const std::string room(width - std::min(width, columnsOf(cell)), ' ');
    return right ? room + cell : cell + room;
}

std::string percentEncoded(std::string_view bytes) {
    constexpr std::string_view plain = "-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if ((code < 0x80 && std::isalnum(code) != 0) || plain.find(byte) != plain.npos)
            encoded += byte;
        else
            (encoded += '%').append({digits[code >> 4], digits[code & 15]});
    }
    return encoded;
}

// Beside each text of an object that is no UTF-8, and would be written with U+FFFD for what is
// none.
void addLostBytes(Json& value) {
    std::vector<std::pair<std::string, std::string>> lost;
    for (auto& [key, member] : value.items()) {
        if (member.is_structured())
            addLostBytes(member);
        else if (const auto* text = member.get_ptr<const std::string*>();
                 text && value.is_object() && !isValidUtf8(*text))
            lost.emplace_back(key + "Bytes", percentEncoded(*text));
    }
    for (auto& [key, bytes] : lost)
        value[key] = std::move(bytes);
}

} // namespace

void say(std::string_view sentence) {
    std::fputs((printable(sentence) + "\n").c_str(), stdout);
}

void complain(std::string_view sentence) {
    std::fflush(stdout);
    std::fputs(("photos-kit: " + printable(sentence) + "\n").c_str(), stderr);
}

void print(Json value) {
    addLostBytes(value);
    const std::string text = value.dump(2, ' ', true, Json::error_handler_t::replace);
    std::fputs((text + "\n").c_str(), stdout);
}

std::optional<std::size_t> terminalColumns() {
    return columnsOfTerminal(STDOUT_FILENO);
}

void Table::add(std::vector<std::string> cells) {
    for (std::string& cell : cells)
        cell = printable(cell);
    rows_.push_back(std::move(cells));
}

std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> widths;
    for (const Column& column : columns_)
        widths.push_back(column.title.size());
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], columnsOf(row[i]));
    }
    const auto terminal = terminalColumns();
    std::size_t all = gap * (widths.size() - 1);
    for (const std::size_t width : widths)
        all += width;
    for (std::size_t i = 0; terminal && i < widths.size(); ++i) {
        if (!columns_[i].shrinks || all <= *terminal)
            continue;
        const std::size_t others = all - widths[i];
        const std::size_t room = *terminal > others ? *terminal - others : 0;
        widths[i] = std::min(widths[i], std::max(room, narrowest));
    }
    return widths;
}

void Table::print() const {
    const std::vector<std::size_t> width = widths();
    const auto printRow = [&](const auto& cellOf) {
        std::string line;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            line += padded(shortened(cellOf(i), width[i]), width[i], columns_[i].right);
            line.append(gap, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::fputs((line + "\n").c_str(), stdout);
    };
    printRow([&](std::size_t i) -> const std::string& { return columns_[i].title; });
    for (const auto& row : rows_)
        printRow([&](std::size_t i) -> const std::string& { return row[i]; });
}

Progress::Progress(std::string doing, std::size_t total)
    : doing_(std::move(doing)), total_(total), terminal_(isatty(STDERR_FILENO) != 0) {}

void Progress::show(std::size_t finished, std::string_view now) {
    constexpr std::chrono::milliseconds pause{100};
    constexpr std::size_t barWidth = 24;
    const auto time = std::chrono::steady_clock::now();
    if (!terminal_ || (shown_ && time - last_ < pause))
        return;
    const std::size_t filled = total_ > 0 ? finished * barWidth / total_ : 0;
    std::string line = doing_ + " [" + std::string(filled, '#') +
                       std::string(barWidth - filled, '-') + "] " + std::to_string(finished) +
                       " of " + std::to_string(total_) + "  " + printable(now);
    const std::size_t columns = columnsOfTerminal(STDERR_FILENO).value_or(80);
    line = shortened(line, columns - 1);
    std::fputs(("\r" + line + "\x1b[K").c_str(), stderr);
    std::fflush(stderr);
    shown_ = true;
    last_ = time;
}

void Progress::clear() {
    if (!shown_)
        return;
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    shown_ = false;
}

} // namespace tool
