// What the tests of the adapter share: the whole core, called through its entry points, on the
// adapter and the stand-in.
#pragma once

#include "bridge/entry_points.h"
#include "tests/photokit/script.h"
#include "tests/support/jni_double.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

// Has a home folder of its own. When a test ends, every object must be gone, and nothing may have
// been autoreleased where no pool was open, or raised.
struct PhotoKitTest : testing::Test {
    PhotoKitTest();
    ~PhotoKitTest() override;
    PhotoKitTest(const PhotoKitTest&) = delete;
    PhotoKitTest& operator=(const PhotoKitTest&) = delete;

    // The calls that the stand-in noted since the last time.
    std::vector<std::string> calls();

    // The messages in the diagnostic log, without their times.
    std::vector<std::string> logLines() const;

    std::filesystem::path write(const std::string& name, const std::string& bytes) const;

    standin::Script& script = standin::script();
    jni::Environment jvm;
    std::filesystem::path home;

private:
    std::size_t callsRead = 0;
    int standardError = -1;
};

std::string readFile(const std::filesystem::path& path);
