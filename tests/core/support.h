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

#include <functional>
#include <string>
#include <vector>

// What every file of tests here would say again.
using namespace platform;
using namespace scripted;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// Calls a method of the host's class in a CoreTest; the answer is text.
#define CALL(name, ...) jvm.call(METHOD(name) __VA_OPT__(, ) __VA_ARGS__)

// What `action` writes to standard error.
std::string standardErrorOf(const std::function<void()>& action);

struct CoreTest : testing::Test {
    // What the one call did between opening its scope, first, and closing it, last.
    std::vector<std::string> operationsOfCall();
    // Whether a line that holds these words was noted by now.
    bool happened(const std::string& words);

    support::ScratchHome home;
    scripted::Library library;
    jni::Environment jvm;
};
