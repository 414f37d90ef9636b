// What the tests of backups, verification and repair share: a library with three assets.
#pragma once

#include "tests/local/support.h"

#include "platform/local/maintenance/verification.h"

namespace support {

class KeptLibrary : public testing::Test {
protected:
    const ScratchHome home;
    std::vector<std::string> identifiers;

    void SetUp() override {
        for (const char* name : {"a", "b", "c"})
            import(name);
    }

    std::string import(const std::string& name) {
        const auto picture = writePicture(home.file(name + ".jpg"), 64, 48, name[0]);
        identifiers.push_back(importFile(picture).identifier.value());
        return identifiers.back();
    }

    fs::path original(std::size_t which) const { return originalOf(home, identifiers[which]); }
    std::string pathOf(std::size_t which) const {
        return fs::relative(original(which), home.library());
    }

    // As a disk that is not there; and there again.
    void unmountOriginals() const {
        fs::rename(home.library() / "originals", home.file("unmounted"));
        fs::create_directory(home.library() / "originals");
    }
    void mountOriginals() const {
        fs::remove(home.library() / "originals");
        fs::rename(home.file("unmounted"), home.library() / "originals");
    }

    // "kind subject", each.
    static std::vector<std::string> named(const std::vector<local::Finding>& findings) {
        std::vector<std::string> all;
        for (const local::Finding& finding : findings)
            all.push_back(local::nameOf(finding.kind) + " " + finding.subject);
        return all;
    }

    // What the library in this folder is found to be, and how many files it has where that is not
    // what was expected.
    static std::vector<std::string> faultsOf(const fs::path& library, std::int64_t files = -1) {
        const local::Verification result = local::verifyLibrary(library.string(), {});
        auto all = named(result.findings);
        if (files >= 0 && result.files != files)
            all.push_back(std::to_string(result.files) + " files");
        return all;
    }
    std::vector<std::string> faults() const { return faultsOf(home.library()); }

    static void flipAByte(const fs::path& path) {
        std::string bytes = readBytes(path);
        bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
        fs::permissions(path, fs::perms::owner_all);
        writeText(path, bytes);
    }
};

} // namespace support
