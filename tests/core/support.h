// What most tests of the core share: a scripted library, a hand-filled JNI environment, and a home
// folder of their own that holds the log.
#pragma once

#include "bridge/entry_points.h"
#include "tests/double/scripted_library.h"
#include "tests/support/files.h"
#include "tests/support/home.h"
#include "tests/support/jni_double.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// What `action` writes to standard error.
std::string standardErrorOf(const std::function<void()>& action);

// Of operations: calls that opened and closed their scopes and did nothing else.
inline auto nothingInScopes() {
    return testing::Each(testing::AnyOf("open scope", "close scope"));
}

struct CoreTest : testing::Test {
    // What the one call did between opening its scope, first, and closing it, last.
    std::vector<std::string> operationsOfCall();

    support::ScratchHome home;
    scripted::InstalledLibrary library;
    jni::Environment jvm;
};
