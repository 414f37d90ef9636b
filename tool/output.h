// What all subcommands print by: tables for people, JSON for programs, sentences for what went
// wrong, and the state of long work.
#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

using Json = nlohmann::ordered_json;

// The exit codes, as the manual promises them.
inline constexpr int done = 0;
inline constexpr int failed = 1;    // or refused, wholly or in part
inline constexpr int wrongUse = 2;  // nothing was done
inline constexpr int stopped = 130; // by a signal

// Ends a command: main prints the sentence and exits with `failed`.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One line on standard output, made printable.
void say(std::string_view sentence);
// "photos-kit: <sentence>" on standard error, made printable.
void complain(std::string_view sentence);
// The value alone on standard output: ASCII only, whatever is in it. A text that is no UTF-8 (a
// path may be any bytes) has U+FFFD for what cannot be told, and beside it in its object, as
// "<its key>Bytes", all of its bytes, percent-encoded.
void print(Json value);

// Columns of the terminal that standard output is; nothing when it is none.
std::optional<std::size_t> terminalColumns();

// Aligned columns. On a terminal the one that `shrinks` is cut to what room is left; elsewhere
// nothing is cut.
class Table {
public:
    struct Column {
        std::string title;
        bool right = false; // aligned
        bool shrinks = false;
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}
    void add(std::vector<std::string> cells); // one for each column; made printable
    void print() const;                       // on standard output

private:
    std::vector<std::size_t> widths() const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

// A bar on standard error while something long goes on; nothing where that is no terminal.
class Progress {
public:
    // `doing` is a word such as "Importing".
    Progress(std::string doing, std::size_t total);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void total(std::size_t all) { total_ = all; } // where it is learned on the way
    // Some times a second, however often it is called.
    void show(std::size_t finished, std::string_view now);
    // Takes the bar away, so that lines can be printed.
    void clear();

private:
    std::string doing_;
    std::size_t total_;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point last_;
};

} // namespace tool
