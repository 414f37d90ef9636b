// A home folder of a test's own, with what the library keeps in it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace support {

// A new folder that is HOME, removed with the object. HOME names it afterwards, too: a thread of
// the library that is still at work must not come upon the home of whoever runs the tests.
class ScratchHome {
public:
    ScratchHome();
    explicit ScratchHome(const std::filesystem::path& below);
    ~ScratchHome();
    ScratchHome(const ScratchHome&) = delete;
    ScratchHome& operator=(const ScratchHome&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path file(const std::string& name) const { return path_ / name; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    std::filesystem::path library() const { return path_ / "Pictures" / "Lumatrice Library"; }
    std::filesystem::path logFile() const;
    // The messages in the diagnostic log, without their times.
    std::vector<std::string> logLines() const;

private:
    std::filesystem::path path_;
};

} // namespace support
