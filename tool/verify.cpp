// photos-kit verify: whether the library is whole.
#include "platform/local/library/library_location.h"
#include "platform/local/maintenance/verification.h"
#include "tool/command.h"
#include "tool/interruption.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <filesystem>
#include <fstream>

namespace tool {

namespace {

namespace fs = std::filesystem;
using local::Finding;
using local::Verification;

struct VerifyOptions {
    std::string state; // a file; empty: none
    std::string library;
    bool quick = false;
    bool json = false;
};

Json jsonOf(const Finding& finding) {
    Json json{{"kind", local::nameOf(finding.kind)}, {"subject", finding.subject}};
    if (!finding.asset.empty())
        json["asset"] = finding.asset;
    json["sentence"] = finding.sentence;
    return json;
}

// What a verification that was stopped has found so far, and where it goes on.
class State {
public:
    State(std::string file, std::string library)
        : file_(std::move(file)), library_(std::move(library)) {
        if (!file_.empty() && fs::exists(file_))
            read();
    }

    std::int64_t row() const { return row_; }
    const Json& earlierFindings() const { return findings_; }

    // Replaces the file at once, so that a kill leaves the last one or this one.
    void write(std::int64_t row, const std::vector<Finding>& found) const {
        if (file_.empty())
            return;
        Json findings = findings_;
        for (const Finding& finding : found) {
            if (!finding.asset.empty()) // the others are found again
                findings.push_back(jsonOf(finding));
        }
        const std::string part = file_ + ".part";
        std::ofstream(part) << Json{{"library", library_}, {"row", row}, {"findings", findings}};
        std::error_code error;
        fs::rename(part, file_, error);
        if (error)
            throw Failure("The state could not be written to " + file_ + ".");
    }

    void remove() const {
        std::error_code error;
        if (!file_.empty())
            fs::remove(file_, error);
    }

private:
    void read() {
        const Json json = Json::parse(std::ifstream(file_), nullptr, false);
        if (!json.is_object() || !json.contains("row") || !json["row"].is_number_integer() ||
            !json.contains("findings") || json.value("library", "") != library_)
            throw Failure(file_ + " holds no state of a verification of this library.");
        row_ = json["row"].get<std::int64_t>();
        findings_ = json["findings"];
    }

    std::string file_;
    std::string library_;
    std::int64_t row_ = 0;
    Json findings_ = Json::array();
};

void report(const Json& finding) {
    const std::string asset = finding.value("asset", "");
    complain(finding["kind"].get<std::string>() + ": " + finding["subject"].get<std::string>() +
             (asset.empty() ? "" : " (asset " + shownIdentifier(asset) + ")") + ": " +
             finding["sentence"].get<std::string>());
}

void summarize(const Verification& result, std::size_t findings, const std::string& state) {
    say("Looked at " + countText(result.files, "file", "files") + ", " + sizeText(result.bytes) +
        ".");
    if (result.leftOver > 0)
        say(countText(result.leftOver, "file", "files") +
            " of finished or interrupted work will be removed when the library is next opened.");
    if (!result.complete)
        say(state.empty() ? "Stopped; it is not known whether the library is whole."
                          : "Stopped; the same command goes on from here.");
    else if (findings == 0)
        say("The library is whole.");
    else
        say(countText(static_cast<std::int64_t>(findings), "fault was", "faults were") +
            " found. See photos-kit repair.");
}

int verify(const VerifyOptions& options) {
    const auto place = options.library.empty() ? local::libraryPath() : options.library;
    if (!place)
        throw Failure("The home folder is not known (HOME is not set).");
    const State state(options.state, *place);
    noteInterruptions();
    Progress bar("Verifying", 0);
    local::VerificationOptions how;
    how.after = state.row();
    how.content = !options.quick;
    how.stop = [] { return interrupted(); };
    auto written = std::chrono::steady_clock::now();
    how.progress = [&](std::int64_t files, std::int64_t all, std::int64_t row,
                       const std::vector<Finding>& found) {
        bar.total(static_cast<std::size_t>(all));
        bar.show(static_cast<std::size_t>(files), found.empty() ? "" : "faults were found");
        const auto now = std::chrono::steady_clock::now();
        if (now - written < std::chrono::seconds(2))
            return;
        written = now;
        state.write(row, found);
    };
    const Verification result = local::verifyLibrary(*place, how);
    bar.clear();
    Json findings = state.earlierFindings();
    for (const Finding& finding : result.findings)
        findings.push_back(jsonOf(finding));
    if (result.complete)
        state.remove();
    else
        state.write(result.row, result.findings);
    if (options.json) {
        print(Json{{"library", *place},
                   {"complete", result.complete},
                   {"files", result.files},
                   {"bytes", result.bytes},
                   {"leftOver", result.leftOver},
                   {"findings", findings}});
    } else {
        for (const Json& finding : findings)
            report(finding);
        summarize(result, findings.size(), options.state);
    }
    if (interrupted())
        return stopped;
    return findings.empty() && result.complete ? done : failed;
}

} // namespace

void addVerify(Tool& tool) {
    CLI::App* command = tool.app.add_subcommand("verify", "Whether the library is whole");
    const auto options = std::make_shared<VerifyOptions>();
    command->add_option("--state", options->state, "Go on where an earlier one stopped")
        ->type_name("FILE");
    command->add_option("--library", options->library, "Another library: a backup, say")
        ->type_name("DIR");
    command->add_flag("--quick", options->quick, "Do not read the files, only look for them");
    addJson(command, options->json);
    command->footer(
        R"(Reads the whole catalogue and every file, and changes nothing: on a read-only
disk too, and while applications run. Each fault is named; the exit code is 1
when there is one.

With --state it notes in FILE how far it came. Stopped by Ctrl-C, a kill or the
end of the day, the same command goes on from there; FILE goes when it is done.

Examples:
  photos-kit verify
  photos-kit verify --state ~/verify.state
  photos-kit verify --library /media/disk/backup
  photos-kit verify --json | jq -r '.findings[].asset')");
    tool.onRun(command, [options] { return verify(*options); });
}

} // namespace tool
