// What most tests of the core share: a scripted library, a hand-filled JNI environment, and a home
// folder of their own that holds the log.
#pragma once

#include "bridge/entry_points.h"
#include "tests/core/jni_double.h"
#include "tests/double/scripted_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Sets HOME to a new folder, with a place for the log, and back to what it was at the end.
struct ScratchHome {
    ScratchHome();
    ~ScratchHome();
    ScratchHome(const ScratchHome&) = delete;
    ScratchHome& operator=(const ScratchHome&) = delete;

    std::filesystem::path logFile() const { return path / ".lumatrice/logs/photos-native.log"; }
    // The messages in the log file, without their times.
    std::vector<std::string> logLines() const;

    std::filesystem::path path;

private:
    std::optional<std::string> previousHome;
};

std::string readFile(const std::filesystem::path& path);

// What `action` writes to standard error.
std::string standardErrorOf(const std::function<void()>& action);

// Of operations: calls that opened and closed their scopes and did nothing else.
inline auto nothingInScopes() {
    return testing::Each(testing::AnyOf("open scope", "close scope"));
}

struct CoreTest : testing::Test {
    // What the one call did between opening its scope, first, and closing it, last.
    std::vector<std::string> operationsOfCall();

    ScratchHome home;
    scripted::InstalledLibrary library;
    jni::Environment jvm;
};
